#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace vl {

// The content-type registry: the type identifier of a file name or extension, conformance of one
// identifier to another, and the texts and icons shown for a type.
//
// Identifiers are MIME type names ("image/png", "application/pdf") plus a few abstract types that
// no file has but many conform to: "public.item", "public.content", "public.data",
// "public.image", "public.movie", "public.audio", "public.text" and "public.folder" (the type of a
// plain folder). Types are decided by the name alone, never by the bytes: a placeholder's content
// is not the document's.
//
// The installed registry is shared by every thread; implementations are safe to call from any.
class ContentTypeRegistry {
public:
    static inline const QString Item = QStringLiteral("public.item");
    static inline const QString Content = QStringLiteral("public.content");
    static inline const QString Data = QStringLiteral("public.data");
    static inline const QString Image = QStringLiteral("public.image");
    static inline const QString Movie = QStringLiteral("public.movie");
    static inline const QString Audio = QStringLiteral("public.audio");
    static inline const QString Text = QStringLiteral("public.text");
    static inline const QString Folder = QStringLiteral("public.folder");
    // The type of a file whose name says nothing (no extension, or one nobody registered).
    static inline const QString UnknownData = QStringLiteral("application/octet-stream");

    // The installed registry. When none was installed, the one over the shared MIME database is
    // installed on first use: it needs nothing but the system's MIME data.
    static ContentTypeRegistry& shared();
    static void setShared(std::shared_ptr<ContentTypeRegistry> registry);

    virtual ~ContentTypeRegistry() = default;

    // The preferred identifier for a filename extension (without the dot, any case); empty when
    // the extension is empty or no type claims it.
    virtual QString preferredIdentifierForExtension(const QString& extension) const = 0;
    // The identifier of an item by its name: "public.folder" for any directory, else the type of
    // the extension, else UnknownData. Whether a directory is a package (one document stored as a
    // folder) is not the registry's to say: the drive knows it from the document types that its
    // app libraries declare.
    virtual QString identifierForFileName(const QString& fileName, bool isDirectory) const = 0;

    // True when `type` is `otherType`, an alias of it, one of its descendants, or falls under the
    // abstract type `otherType`. Unknown identifiers conform only to themselves and
    // "public.item".
    virtual bool conformsTo(const QString& type, const QString& otherType) const = 0;

    // The localized description of the type ("PNG image"); empty for an unknown identifier.
    virtual QString localizedDescription(const QString& type) const = 0;
    // The freedesktop icon names of the type ("image-png") and of its kind ("image-x-generic").
    virtual QString iconName(const QString& type) const = 0;
    virtual QString genericIconName(const QString& type) const = 0;
    // The extension a new file of this type gets (without the dot); empty when it has none.
    virtual QString preferredExtension(const QString& type) const = 0;
    virtual QStringList extensions(const QString& type) const = 0;
};

}  // namespace vl
