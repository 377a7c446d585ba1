#pragma once

#include "platform/dispatch/Dispatch.h"

#include <array>
#include <mutex>

namespace vl {

class RealMainQueue;

// The production backend: the main queue runs on Qt's event loop, each serial queue on a worker
// thread of its own, and each global queue on a small pool of threads shared by its users.
class RealDispatcher final : public Dispatcher {
public:
    RealDispatcher();
    ~RealDispatcher() override;

    DispatchQueuePtr mainQueue() override;
    DispatchQueuePtr globalQueue(QualityOfService qos) override;
    DispatchQueuePtr createSerialQueue(const QString& label, QualityOfService qos,
                                       int relativePriority) override;
    DispatchTime now() const override;
    // Also the main queue on the main thread outside any block.
    DispatchQueue* currentQueue() const override;

    static QString globalQueueLabel(QualityOfService qos);
    // Threads per global queue: between 2 and 4, following the number of cores.
    static int globalQueueThreadCount();

private:
    const std::shared_ptr<RealMainQueue> main_;
    std::mutex globalMutex_;
    std::array<DispatchQueuePtr, 5> global_;  // guarded by globalMutex_; made on first use
};

}  // namespace vl
