#include "platform/dispatch/RealDispatcher.h"

#include "platform/dispatch/RealMainQueue.h"
#include "platform/dispatch/RealWorkerQueue.h"

#include <algorithm>
#include <thread>

namespace vl {

RealDispatcher::RealDispatcher() : main_(std::make_shared<RealMainQueue>()) {}

RealDispatcher::~RealDispatcher() = default;

DispatchQueuePtr RealDispatcher::mainQueue() {
    return main_;
}

QString RealDispatcher::globalQueueLabel(QualityOfService qos) {
    switch (qos) {
        case QualityOfService::UserInteractive:
            return QStringLiteral("com.tessaly.global.user-interactive");
        case QualityOfService::UserInitiated:
            return QStringLiteral("com.tessaly.global.user-initiated");
        case QualityOfService::Default:
            break;
        case QualityOfService::Utility:
            return QStringLiteral("com.tessaly.global.utility");
        case QualityOfService::Background:
            return QStringLiteral("com.tessaly.global.background");
    }
    return QStringLiteral("com.tessaly.global.default");
}

int RealDispatcher::globalQueueThreadCount() {
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 4);
}

DispatchQueuePtr RealDispatcher::globalQueue(QualityOfService qos) {
    std::lock_guard lock(globalMutex_);
    DispatchQueuePtr& queue = global_.at(static_cast<size_t>(qos));
    if (!queue) {
        queue = RealWorkerQueue::create(globalQueueLabel(qos), globalQueueThreadCount(), qos, 0);
    }
    return queue;
}

DispatchQueuePtr RealDispatcher::createSerialQueue(const QString& label, QualityOfService qos,
                                                   int relativePriority) {
    return RealWorkerQueue::create(label, 1, qos, relativePriority);
}

DispatchTime RealDispatcher::now() const {
    return main_->now();
}

DispatchQueue* RealDispatcher::currentQueue() const {
    if (DispatchQueue* queue = CurrentQueueScope::current()) {
        return queue;
    }
    return RealMainQueue::isMainThread() ? main_.get() : nullptr;
}

}  // namespace vl
