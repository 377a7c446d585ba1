#include "logging/LogRecordBuffer.h"

#include "logging/VLSLSClient.h"

namespace vl {

LogRecordBuffer::LogRecordBuffer(Sender sender) : sender_(sender) {
    VLSLSClient::SLSClient()->setPendingRecordsDrain([this] { drain(); });
}

void LogRecordBuffer::append(PendingLogRecord&& record) {
    bool submit = false;
    {
        std::lock_guard lock(mutex_);
        pending_.push_back(std::move(record));
        submit = !drainSubmitted_;
        drainSubmitted_ = true;
    }
    if (submit) {
        VLSLSClient::SLSClient()->performLoggingBlockAfter(GatherTime, [this] { drain(); });
    }
}

void LogRecordBuffer::drain() {
    std::vector<PendingLogRecord> batch;
    {
        std::lock_guard lock(mutex_);
        batch.swap(pending_);
        pending_.swap(spare_);  // reuse the previous batch's capacity
        drainSubmitted_ = false;
    }
    for (const PendingLogRecord& record : batch) {
        sender_(record);
    }
    batch.clear();
    std::lock_guard lock(mutex_);
    if (spare_.capacity() < batch.capacity()) {
        spare_.swap(batch);
    }
}

}  // namespace vl
