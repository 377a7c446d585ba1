#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vl {

// Who sent a launch URL. The system can't tell: a URL comes on the command line of whoever
// starts the app, so the starter names itself there with `--source-application=<identifier>`,
// before the URL. The desktop entry that the set-up installs says "com.tessaly.homeshell" (the
// desktop's launcher: xdg-open, gio open, a file manager, a browser's link); the end-to-end
// harness says "com.tessaly.Drillbot". Only these two are trusted; docs/ARCHITECTURE.md tells
// what that trust is worth and why nothing else can claim it.
class LaunchSource {
public:
    LaunchSource() = delete;

    static inline const QString HomeShell = QStringLiteral("com.tessaly.homeshell");
    static inline const QString Drillbot = QStringLiteral("com.tessaly.Drillbot");
    // The key of the sender's identifier in the options of a launch URL.
    static inline const QString OptionKey = QStringLiteral("SourceApplication");
    static inline const QString ArgumentPrefix = QStringLiteral("--source-application=");

    static bool isTrusted(const std::optional<QString>& identifier);

    // The sender named on a command line (without the program's name): the value of the first
    // `--source-application=` argument that comes before the URL; absent when there is none or
    // it is empty. Arguments after the URL are not read, so nothing inside a URL, nor after it,
    // can name a sender.
    static std::optional<QString> fromArguments(const QStringList& arguments);
    // The URL on a command line: the first argument that is not an option.
    static std::optional<QString> urlFromArguments(const QStringList& arguments);
};

}  // namespace vl
