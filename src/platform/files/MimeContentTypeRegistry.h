#pragma once

#include "platform/files/ContentTypeRegistry.h"

#include <QMimeDatabase>

namespace vl {

// The content-type registry over the freedesktop shared MIME database (QMimeDatabase).
//
// shared-mime-info has no wildcard supertypes, so the abstract kinds are decided here: a type is
// an image, a movie, audio or text when its media type ("image/", "video/", "audio/", "text/") or
// that of one of its ancestors says so, or when its own generic icon does ("application/ogg" is a
// movie only by its icon). Every type that is not a folder is data.
//
// QMimeDatabase instances share one locked database, so this is safe from any thread.
class MimeContentTypeRegistry : public ContentTypeRegistry {
public:
    QString preferredIdentifierForExtension(const QString& extension) const override;
    QString identifierForFileName(const QString& fileName, bool isDirectory) const override;
    bool conformsTo(const QString& type, const QString& otherType) const override;
    QString localizedDescription(const QString& type) const override;
    QString iconName(const QString& type) const override;
    QString genericIconName(const QString& type) const override;
    QString preferredExtension(const QString& type) const override;
    QStringList extensions(const QString& type) const override;

private:
    enum class Kind { None, Image, Movie, Audio, Text };

    // The MIME type for a name, matched by its extension only; invalid when nothing matches.
    QMimeType typeForName(const QString& fileName) const;
    // The identifier in the form this registry answers: MIME aliases resolved,
    // "inode/directory" as "public.folder".
    QString canonical(const QString& type) const;
    Kind kindOf(const QMimeType& type) const;
    bool isAbstract(const QString& type) const;
    bool abstractConformsTo(const QString& type, const QString& otherType) const;

    QMimeDatabase database_;
};

}  // namespace vl
