#include "platform/app/TerminationSignals.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

#include <signal.h>

using namespace vl;

namespace {

// Runs the event loop with a signal raised from inside it; answers exec's status, 99 when the
// loop had to be ended by the safety timer.
int execRaising(int signal) {
    QTimer::singleShot(0, [signal] { ::raise(signal); });
    QTimer safety;
    safety.setSingleShot(true);
    QObject::connect(&safety, &QTimer::timeout, [] { QCoreApplication::exit(99); });
    safety.start(5000);
    return QCoreApplication::exec();
}

bool defaultDisposition(int signal) {
    struct sigaction current {};
    ::sigaction(signal, nullptr, &current);
    return current.sa_handler == SIG_DFL;
}

}  // namespace

TEST(TerminationSignals, EachSignalEndsTheLoopOnceThenTheDefaultsComeBack) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        TerminationSignals handler;
        EXPECT_FALSE(defaultDisposition(signal));
        EXPECT_EQ(execRaising(signal), 0) << ::strsignal(signal);
        EXPECT_EQ(handler.receivedSignal(), signal);
        // A second one while quitting is no longer caught.
        EXPECT_TRUE(defaultDisposition(signal));
    }
    {
        TerminationSignals handler;
        EXPECT_FALSE(defaultDisposition(SIGTERM));
    }
    EXPECT_TRUE(defaultDisposition(SIGTERM));
    EXPECT_TRUE(defaultDisposition(SIGINT));
}
