#include "logging/LogRecordBuffer.h"

#include "logging/VLSLSClient.h"

#include <iterator>

namespace vl {

LogRecordBuffer::LogRecordBuffer(Sender sender) : sender_(sender) {
    VLSLSClient::SLSClient()->setPendingRecordsDrain([this] { drain(); });
}

void LogRecordBuffer::append(PendingLogRecord&& record) {
    VLSLSClient* const client = VLSLSClient::SLSClient();
    if (client->isExiting()) {
        // What is left of the process is being torn down: send it here and now, in order.
        std::lock_guard lock(exitMutex_);
        sender_(record);
        return;
    }
    bool submitLater = false;
    bool submitNow = false;
    // Sent records are freed here, by a logging thread, rather than on the log queue: memory
    // freed by another thread than the one that took it makes both wait on the allocator's lock,
    // and a thread that logs much would then pay for its own records twice.
    std::vector<PendingLogRecord> sent;
    {
        std::lock_guard lock(mutex_);
        sent.swap(sent_);
        pending_.push_back(std::move(record));
        // One timed drain at a time serves every batch until it runs.
        submitLater = !timedDrainPending_;
        timedDrainPending_ = true;
        submitNow = pending_.size() == BatchLimit && !promptDrainSubmitted_;
        promptDrainSubmitted_ = promptDrainSubmitted_ || submitNow;
    }
    if (!sent.empty()) {
        sent.clear();
        std::lock_guard lock(mutex_);
        if (spare_.capacity() < sent.capacity()) {
            spare_.swap(sent);
        }
    }
    if (submitLater) {
        client->performLoggingBlockAfter(GatherTime, [this] {
            {
                std::lock_guard lock(mutex_);
                timedDrainPending_ = false;
            }
            drain();
        });
    }
    if (submitNow) {
        client->performLoggingBlock([this] { drain(); });
    }
}

void LogRecordBuffer::drain() {
    std::vector<PendingLogRecord> batch;
    {
        std::lock_guard lock(mutex_);
        batch.swap(pending_);
        pending_.swap(spare_);  // reuse the storage of a batch already freed
        promptDrainSubmitted_ = false;
    }
    for (const PendingLogRecord& record : batch) {
        sender_(record);
    }
    // The records' strings go back to the threads that made them (see append).
    std::lock_guard lock(mutex_);
    if (sent_.empty()) {
        sent_.swap(batch);
    } else {
        std::move(batch.begin(), batch.end(), std::back_inserter(sent_));
    }
}

}  // namespace vl
