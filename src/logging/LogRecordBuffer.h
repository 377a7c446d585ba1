#pragma once

#include <QString>

#include <sys/time.h>

#include <chrono>
#include <cstddef>
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
    // When it was logged: a batch is built a moment later, on the log queue.
    timeval time = {};

    const QString& functionName() const { return staticFunction ? *staticFunction : function; }
};

// Hands log records to the logging client's queue in batches: a record that finds no drain
// scheduled submits one through the client, to run a moment later, and the records that arrive
// before it runs ride along; a batch that grows large is drained at once. Records keep their
// submission order; the caller pays for a short lock and a move, and a steady trickle of records
// wakes the log queue once per batch rather than once per record. The client's flush() drains at
// once.
class LogRecordBuffer {
public:
    using Sender = void (*)(const PendingLogRecord&);
    // How long a batch gathers records: short enough that a line reaches the log without a
    // noticeable delay, long enough to spare a busy caller a thread wake-up per record.
    static constexpr std::chrono::milliseconds GatherTime{5};
    // A batch this large goes at once: a flood of records gains nothing from waiting, and a
    // growing batch costs its caller the moves of reallocation.
    static constexpr std::size_t BatchLimit = 64;

    explicit LogRecordBuffer(Sender sender);
    void append(PendingLogRecord&& record);

    // Sends everything appended so far; runs on the log queue.
    void drain();

private:
    const Sender sender_;
    std::mutex mutex_;
    std::vector<PendingLogRecord> pending_;  // guarded by mutex_
    std::vector<PendingLogRecord> spare_;    // guarded by mutex_: an empty batch's storage
    std::vector<PendingLogRecord> sent_;     // guarded by mutex_: sent, waiting to be freed
    std::mutex exitMutex_;                   // serialises the records sent while exiting
    bool timedDrainPending_ = false;         // guarded by mutex_
    bool promptDrainSubmitted_ = false;      // guarded by mutex_
};

}  // namespace vl
