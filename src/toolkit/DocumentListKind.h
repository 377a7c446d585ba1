#pragma once

#include <QIcon>
#include <QString>

namespace vl {

// What the rows of one kind of item share: the content type, the icon names and, once a row of
// the kind was painted, the icons themselves. A folder of 100,000 documents has a handful of
// kinds, so each row points at one of these instead of carrying three strings of its own.
// Kinds are made once per process and never freed; the names are set before a kind is shared
// and never change, so they may be read on any thread.
class DocumentListKind {
public:
    // The one kind for these names, made on first use. Safe on any thread.
    static const DocumentListKind* intern(const QString& contentType, const QString& iconName,
                                          const QString& genericIconName = {});
    // The kind of plain folders, and of app libraries.
    static const DocumentListKind* folder();
    static const DocumentListKind* appLibrary();

    // Empty for folders and app libraries.
    const QString& contentType() const { return contentType_; }
    const QString& iconName() const { return iconName_; }
    // The icon of the item's kind, for when no icon has the precise name.
    const QString& genericIconName() const { return genericIconName_; }
    // Images, PDFs and videos show their own thumbnail.
    bool wantsThumbnail() const { return wantsThumbnail_; }

    // The icon, and its faded variant for cloud-only items. Main thread only.
    QIcon icon() const;
    QIcon cloudOnlyIcon() const;

    DocumentListKind(QString contentType, QString iconName, QString genericIconName);

private:
    const QString contentType_;
    const QString iconName_;
    const QString genericIconName_;
    const bool wantsThumbnail_;
    // Made on the main thread when first painted.
    mutable QIcon icon_;
    mutable QIcon cloudOnlyIcon_;
};

}  // namespace vl
