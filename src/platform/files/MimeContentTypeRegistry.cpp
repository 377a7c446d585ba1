#include "platform/files/MimeContentTypeRegistry.h"

#include <QCoreApplication>

namespace vl {

namespace {

const QString DirectoryMimeType = QStringLiteral("inode/directory");

// Generic icons of documents that are content although no media type says so.
bool isDocumentIcon(const QString& genericIcon) {
    return genericIcon == QLatin1String("x-office-document") ||
           genericIcon == QLatin1String("x-office-spreadsheet") ||
           genericIcon == QLatin1String("x-office-presentation") ||
           genericIcon == QLatin1String("x-office-drawing");
}

QString fileNameOnly(const QString& fileName) {
    QString name = fileName;
    while (name.endsWith(QLatin1Char('/'))) {
        name.chop(1);
    }
    return name.mid(name.lastIndexOf(QLatin1Char('/')) + 1);
}

}  // namespace

QMimeType MimeContentTypeRegistry::typeForName(const QString& fileName) const {
    const QString name = fileNameOnly(fileName);
    if (name.isEmpty()) {
        return {};
    }
    // Matching on the name alone never opens the file; only a trailing slash would make
    // QMimeDatabase answer a directory, and the name has none left.
    const QMimeType type = database_.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    if (!type.isValid() || type.isDefault()) {
        return {};
    }
    return type;
}

QString MimeContentTypeRegistry::preferredIdentifierForExtension(const QString& extension) const {
    if (extension.isEmpty() || extension.contains(QLatin1Char('/'))) {
        return {};
    }
    return typeForName(QStringLiteral("x.") + extension).name();
}

QString MimeContentTypeRegistry::identifierForFileName(const QString& fileName,
                                                       bool isDirectory) const {
    if (isDirectory) {
        return Folder;
    }
    const QMimeType type = typeForName(fileName);
    return type.isValid() ? type.name() : UnknownData;
}

bool MimeContentTypeRegistry::isAbstract(const QString& type) const {
    return type == Item || type == Content || type == Data || type == Image || type == Movie ||
           type == Audio || type == Text || type == Folder;
}

QString MimeContentTypeRegistry::canonical(const QString& type) const {
    if (type.isEmpty() || isAbstract(type)) {
        return type;
    }
    const QMimeType mime = database_.mimeTypeForName(type);
    if (!mime.isValid()) {
        return type;
    }
    if (mime.name() == DirectoryMimeType) {
        return Folder;
    }
    return mime.name();
}

MimeContentTypeRegistry::Kind MimeContentTypeRegistry::kindOf(const QMimeType& type) const {
    QStringList lineage{type.name()};
    lineage += type.allAncestors();
    for (const QString& name : lineage) {
        if (name.startsWith(QLatin1String("image/"))) {
            return Kind::Image;
        }
        if (name.startsWith(QLatin1String("video/"))) {
            return Kind::Movie;
        }
        if (name.startsWith(QLatin1String("audio/"))) {
            return Kind::Audio;
        }
    }
    const QString icon = type.genericIconName();
    if (icon == QLatin1String("image-x-generic")) {
        return Kind::Image;
    }
    if (icon == QLatin1String("video-x-generic")) {
        return Kind::Movie;
    }
    if (icon == QLatin1String("audio-x-generic")) {
        return Kind::Audio;
    }
    for (const QString& name : lineage) {
        if (name.startsWith(QLatin1String("text/"))) {
            return Kind::Text;
        }
    }
    return icon == QLatin1String("text-x-generic") ? Kind::Text : Kind::None;
}

bool MimeContentTypeRegistry::abstractConformsTo(const QString& type,
                                                 const QString& otherType) const {
    if (type == Image || type == Movie || type == Audio || type == Text) {
        return otherType == Content || otherType == Data;
    }
    return false;
}

bool MimeContentTypeRegistry::conformsTo(const QString& type, const QString& otherType) const {
    const QString t = canonical(type);
    const QString o = canonical(otherType);
    if (t.isEmpty() || o.isEmpty()) {
        return false;
    }
    if (t == o || o == Item) {
        return true;
    }
    if (isAbstract(t)) {
        return abstractConformsTo(t, o);
    }
    const QMimeType mime = database_.mimeTypeForName(t);
    if (!mime.isValid()) {
        return false;
    }
    if (o == Folder) {
        return false;
    }
    if (o == Data) {
        return true;
    }
    if (isAbstract(o)) {
        const Kind kind = kindOf(mime);
        if (o == Image) {
            return kind == Kind::Image;
        }
        if (o == Movie) {
            return kind == Kind::Movie;
        }
        if (o == Audio) {
            return kind == Kind::Audio;
        }
        if (o == Text) {
            return kind == Kind::Text;
        }
        if (o == Content) {
            return kind != Kind::None || isDocumentIcon(mime.genericIconName());
        }
        return false;
    }
    return mime.inherits(o);
}

QString MimeContentTypeRegistry::localizedDescription(const QString& type) const {
    const QString t = canonical(type);
    if (t == Folder) {
        return database_.mimeTypeForName(DirectoryMimeType).comment();
    }
    if (t == Image) {
        return QCoreApplication::translate("ContentTypeRegistry", "image");
    }
    if (t == Movie) {
        return QCoreApplication::translate("ContentTypeRegistry", "movie");
    }
    if (t == Audio) {
        return QCoreApplication::translate("ContentTypeRegistry", "audio");
    }
    if (t == Text) {
        return QCoreApplication::translate("ContentTypeRegistry", "text");
    }
    if (t == Content) {
        return QCoreApplication::translate("ContentTypeRegistry", "content");
    }
    if (t == Data || t == Item) {
        return QCoreApplication::translate("ContentTypeRegistry", "document");
    }
    const QMimeType mime = database_.mimeTypeForName(t);
    return mime.isValid() ? mime.comment() : QString();
}

QString MimeContentTypeRegistry::iconName(const QString& type) const {
    const QString t = canonical(type);
    if (isAbstract(t)) {
        return genericIconName(t);
    }
    const QMimeType mime = database_.mimeTypeForName(t);
    return mime.isValid() ? mime.iconName() : genericIconName(t);
}

QString MimeContentTypeRegistry::genericIconName(const QString& type) const {
    const QString t = canonical(type);
    if (t == Folder) {
        return QStringLiteral("folder");
    }
    if (t == Image) {
        return QStringLiteral("image-x-generic");
    }
    if (t == Movie) {
        return QStringLiteral("video-x-generic");
    }
    if (t == Audio) {
        return QStringLiteral("audio-x-generic");
    }
    if (t == Text) {
        return QStringLiteral("text-x-generic");
    }
    const QMimeType mime = database_.mimeTypeForName(t);
    return mime.isValid() ? mime.genericIconName() : QStringLiteral("application-x-generic");
}

QString MimeContentTypeRegistry::preferredExtension(const QString& type) const {
    const QMimeType mime = database_.mimeTypeForName(canonical(type));
    return mime.isValid() ? mime.preferredSuffix() : QString();
}

QStringList MimeContentTypeRegistry::extensions(const QString& type) const {
    const QMimeType mime = database_.mimeTypeForName(canonical(type));
    return mime.isValid() ? mime.suffixes() : QStringList();
}

}  // namespace vl
