#include "app/LaunchURL.h"

#include "preview/PreviewItemManager.h"

#include <QUrlQuery>

namespace vl {

namespace {

int hexValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

}  // namespace

// Qt's own decoder turns a "%" with no hex digits after it into some other byte.
QString LaunchURL::unescaped(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    QByteArray decoded;
    decoded.reserve(bytes.size());
    for (qsizetype index = 0; index < bytes.size(); ++index) {
        const int high = index + 2 < bytes.size() ? hexValue(bytes[index + 1]) : -1;
        const int low = high >= 0 ? hexValue(bytes[index + 2]) : -1;
        if (bytes[index] == '%' && low >= 0) {
            decoded.append(static_cast<char>(high * 16 + low));
            index += 2;
        } else {
            decoded.append(bytes[index]);
        }
    }
    return QString::fromUtf8(decoded);
}

Url LaunchURL::fileURLOf(const QUrl& url) {
    const QString path = unescaped(url.path(QUrl::FullyDecoded));
    return path.startsWith(QLatin1Char('/')) ? Url::fromPath(path) : Url();
}

int LaunchURL::previewModeOf(const QUrl& url) {
    int mode = PreviewItemManager::PreviewModePreview;
    for (const auto& [name, value] : QUrlQuery(url).queryItems(QUrl::FullyDecoded)) {
        if (unescaped(name) != QLatin1String("mode")) {
            continue;
        }
        const QString verb = unescaped(value);
        if (verb == QLatin1String("preview")) {
            mode = PreviewItemManager::PreviewModePreview;
        } else if (verb == QLatin1String("details") || verb == QLatin1String("info")) {
            mode = PreviewItemManager::PreviewModeDetails;
        }
    }
    return mode;
}

}  // namespace vl
