#pragma once

#include "platform/files/Url.h"

#include <QString>
#include <QUrl>

namespace vl {

// What a launch URL ("velloraapp:", the item's file path, an optional query item `mode`) asks
// for. Senders escape names and values once or twice, so each is unescaped once more after the
// URL's own decoding.
class LaunchURL {
public:
    LaunchURL() = delete;

    static inline const QString Scheme = QStringLiteral("velloraapp");

    // The file URL of the path; empty when the path is not absolute (it would depend on the
    // running instance's working directory).
    static Url fileURLOf(const QUrl& url);
    // The preview mode (PreviewItemManager's) that the last recognised `mode` item selects:
    // "preview" preview, "details" or "info" details; preview when there is none.
    static int previewModeOf(const QUrl& url);
    // `text` with its percent-escapes removed; a "%" that starts no escape stays.
    static QString unescaped(const QString& text);
};

}  // namespace vl
