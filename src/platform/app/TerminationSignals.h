#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace vl {

// A session that ends, a `kill` or Ctrl-C asks the app to quit rather than dying on the spot:
// SIGTERM, SIGINT and SIGHUP end the main event loop, so that everything done on the way out
// (logs flushed, state saved, watchers stopped) still happens. A second signal while quitting
// takes its default effect, so a stuck exit can still be interrupted. One instance at a time,
// on the main thread; the previous dispositions come back when it goes.
class TerminationSignals : public QObject {
public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    // The signal that asked to quit, or 0.
    int receivedSignal() const { return received_; }

private:
    void signalArrived();

    int readFd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    int received_ = 0;
};

}  // namespace vl
