#include "toolkit/PreviewContentKind.h"

#include "platform/files/ContentTypeRegistry.h"

#include <QByteArray>
#include <QImageReader>
#include <QSet>

#include <sys/stat.h>

namespace vl {

namespace {

// The formats the image plugins of this process can decode, by lower-case extension. Read once:
// the plugin list does not change while the process runs.
const QSet<QString>& decodableImageExtensions() {
    static const QSet<QString> extensions = [] {
        QSet<QString> set;
        for (const QByteArray& format : QImageReader::supportedImageFormats()) {
            set.insert(QString::fromLatin1(format).toLower());
        }
        return set;
    }();
    return extensions;
}

}  // namespace

PreviewContentKind::Kind PreviewContentKind::kindForFileName(const QString& name) {
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.identifierForFileName(name, false);
    if (registry.conformsTo(type, ContentTypeRegistry::Image)) {
        // A camera's raw format is an image the plugins may not read: it gets the generic page.
        const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
        const QString extension = dot > 0 ? name.mid(dot + 1).toLower() : QString();
        return decodableImageExtensions().contains(extension) ? Image : Generic;
    }
    if (registry.conformsTo(type, QStringLiteral("application/pdf"))) {
        return Pdf;
    }
    if (registry.conformsTo(type, ContentTypeRegistry::Movie)) {
        return Video;
    }
    if (registry.conformsTo(type, ContentTypeRegistry::Audio)) {
        return Audio;
    }
    if (registry.conformsTo(type, QStringLiteral("text/markdown"))) {
        return Markdown;
    }
    if (type == QLatin1String("text/plain")) {
        return PlainText;
    }
    if (registry.conformsTo(type, ContentTypeRegistry::Text) ||
        registry.conformsTo(type, QStringLiteral("text/plain"))) {
        return Code;
    }
    return Generic;
}

PreviewContentKind::Kind PreviewContentKind::kindForUrl(const Url& url,
                                                        std::optional<bool> isFolder) {
    if (url.isEmpty() || url.hasDirectoryPath()) {
        return Generic;
    }
    const Kind kind = kindForFileName(url.lastPathComponent());
    if (kind == Generic) {
        return Generic;
    }
    if (isFolder) {
        return *isFolder ? Generic : kind;
    }
    // A cloud-only item's logical path does not exist yet; its name alone tells its kind.
    struct stat st {};
    const QByteArray path = url.path().toLocal8Bit();
    return ::stat(path.constData(), &st) == 0 && S_ISDIR(st.st_mode) ? Generic : kind;
}

bool PreviewContentKind::canPreviewItem(const Url& url, std::optional<bool> isFolder) {
    return kindForUrl(url, isFolder) != Generic;
}

QString PreviewContentKind::name(Kind kind) {
    switch (kind) {
        case Image:
            return QStringLiteral("image");
        case PlainText:
            return QStringLiteral("text");
        case Code:
            return QStringLiteral("code");
        case Markdown:
            return QStringLiteral("markdown");
        case Pdf:
            return QStringLiteral("pdf");
        case Audio:
            return QStringLiteral("audio");
        case Video:
            return QStringLiteral("video");
        case Generic:
            break;
    }
    return QStringLiteral("generic");
}

}  // namespace vl
