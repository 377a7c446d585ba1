#include "CommandLine.h"
#include "ToolContext.h"

#include <QGuiApplication>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    // The drive service logs to the state directory and copies each line to standard error; the
    // tool keeps its standard error for its own one-line errors unless asked to be verbose.
    if (qEnvironmentVariableIsEmpty("VELLORACTL_VERBOSE")) {
        const int errors = ::dup(STDERR_FILENO);
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (errors >= 0 && null >= 0) {
            ::fcntl(errors, F_SETFD, FD_CLOEXEC);
            if (FILE* stream = ::fdopen(errors, "w")) {
                ::dup2(null, STDERR_FILENO);
                vl::ToolContext::setErrorStream(stream);
            }
        }
        if (null >= 0) {
            ::close(null);
        }
    }
    // The demo content is drawn with QPainter, which needs a GUI application but never a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("velloractl"));
    QStringList arguments = QGuiApplication::arguments();
    arguments.removeFirst();
    return vl::CommandLine().run(arguments);
}
