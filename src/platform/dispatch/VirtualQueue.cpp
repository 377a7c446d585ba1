#include "platform/dispatch/VirtualQueue.h"

#include "platform/dispatch/VirtualDispatcher.h"

namespace vl {

VirtualQueue::VirtualQueue(const QString& label, std::weak_ptr<VirtualDispatcher> owner)
    : label_(label), owner_(std::move(owner)) {}

QString VirtualQueue::label() const {
    return label_;
}

void VirtualQueue::async(DispatchBlock block) {
    if (auto owner = owner_.lock()) {
        owner->post(*this, std::nullopt, std::move(block));
    }
}

void VirtualQueue::asyncAt(DispatchTime when, DispatchBlock block) {
    if (auto owner = owner_.lock()) {
        owner->post(*this, when, std::move(block));
    }
}

void VirtualQueue::sync(DispatchBlock block) {
    if (auto owner = owner_.lock()) {
        owner->runSync(*this, block);
    }
}

DispatchTime VirtualQueue::now() const {
    auto owner = owner_.lock();
    return owner ? owner->now() : Dispatch::now();
}

}  // namespace vl
