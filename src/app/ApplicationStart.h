#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QApplication;

namespace vl {

class DisplayPlatform;

// Makes the application object on the chosen platform plugin. Qt aborts the process when no
// platform plugin can be started (the display refuses the connection, the plugin is missing or
// broken); here that ends instead with one line on stderr and exit status 1.
class ApplicationStart {
public:
    ApplicationStart() = delete;

    // `argc` must outlive the application object.
    static std::unique_ptr<QApplication> create(int& argc, char** argv,
                                                const DisplayPlatform& platform);

    // Tells why the app cannot start, in the log and (its console copy) on stderr, as one line;
    // the caller exits 1.
    static void report(const QString& cause);

    // The cause behind the messages Qt printed before it gave up on the plugin `pluginName`
    // (empty when Qt chose), with the remedy.
    static QString causeOfPlatformFailure(const QStringList& messages, const QString& pluginName);
};

}  // namespace vl
