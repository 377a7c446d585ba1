#include "platform/app/TerminationSignals.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace vl {

namespace {

constexpr std::array<int, 3> Signals = {SIGTERM, SIGINT, SIGHUP};

// Written by the handler, so only what is async-signal-safe: the pipe's write end.
volatile sig_atomic_t writeFd = -1;
std::array<struct sigaction, Signals.size()> previous{};

void handleSignal(int signal) {
    const int savedErrno = errno;
    const unsigned char number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(writeFd, &number, 1);
    errno = savedErrno;
}

}  // namespace

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;  // the signals keep their default effect
    }
    readFd_ = fds[0];
    writeFd = fds[1];
    notifier_ = std::make_unique<QSocketNotifier>(readFd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &TerminationSignals::signalArrived);
    for (size_t i = 0; i < Signals.size(); ++i) {
        struct sigaction action {};
        action.sa_handler = handleSignal;
        sigemptyset(&action.sa_mask);
        // Once asked, a second signal is not caught again.
        action.sa_flags = SA_RESTART | SA_RESETHAND;
        ::sigaction(Signals[i], &action, &previous[i]);
    }
}

TerminationSignals::~TerminationSignals() {
    if (readFd_ < 0) {
        return;
    }
    for (size_t i = 0; i < Signals.size(); ++i) {
        ::sigaction(Signals[i], &previous[i], nullptr);
    }
    notifier_.reset();
    const int fd = writeFd;
    writeFd = -1;
    ::close(fd);
    ::close(readFd_);
}

void TerminationSignals::signalArrived() {
    unsigned char number = 0;
    while (::read(readFd_, &number, 1) == 1) {
        if (received_ == 0) {
            received_ = number;
            QCoreApplication::quit();
        }
    }
}

}  // namespace vl
