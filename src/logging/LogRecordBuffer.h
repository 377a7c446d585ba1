#pragma once

#include <QString>

#include <chrono>
#include <mutex>
#include <vector>

namespace vl {

// One log call, formatted and waiting for the log queue.
struct PendingLogRecord {
    const char* file = nullptr;
    // The call site's own function-name string, which lives as long as the process; copying a
    // shared QString would make caller and log queue bounce its reference count between cores.
    const QString* staticFunction = nullptr;
    QString function;  // used when there is no static one
    unsigned line = 0;
    QString facility;
    int level = 0;
    QString message;
    QString thread;

    const QString& functionName() const { return staticFunction ? *staticFunction : function; }
};

// Hands log records to the logging client's queue in batches: the first record of a batch
// submits one drain block through the client, to run a moment later, and the records that arrive
// before it runs ride along. Records keep their submission order; the caller pays for a short
// lock and a move, and a burst of records wakes the log queue once rather than once per record.
// The client's flush() drains at once.
class LogRecordBuffer {
public:
    using Sender = void (*)(const PendingLogRecord&);
    // How long a batch gathers records: short enough that a line reaches the log without a
    // noticeable delay, long enough to spare a busy caller a thread wake-up per record.
    static constexpr std::chrono::milliseconds GatherTime{5};

    explicit LogRecordBuffer(Sender sender);
    void append(PendingLogRecord&& record);

    // Sends everything appended so far; runs on the log queue.
    void drain();

private:
    const Sender sender_;
    std::mutex mutex_;
    std::vector<PendingLogRecord> pending_;  // guarded by mutex_
    std::vector<PendingLogRecord> spare_;    // guarded by mutex_: the last batch's storage
    bool drainSubmitted_ = false;            // guarded by mutex_
};

}  // namespace vl
