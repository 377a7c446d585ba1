#pragma once

#include "platform/cloud/ReachabilityMonitor.h"

namespace vl::test {

// A reachability monitor driven by the test: `deliver` queues the callback with the given flags
// on the monitor's queue, as a real monitor does after a change.
class FakeReachabilityMonitor : public ReachabilityMonitor {
public:
    struct Script {
        bool refuseCallback = false;
        bool refuseQueue = false;
        FakeReachabilityMonitor* created = nullptr;
        QString hostName;
    };

    explicit FakeReachabilityMonitor(Script& script) : script_(script) { script_.created = this; }
    ~FakeReachabilityMonitor() override { script_.created = nullptr; }

    // Installs a factory that makes fakes reporting to `script`, or none with null.
    static void install(Script* script) {
        if (!script) {
            ReachabilityMonitor::setFactory({});
            return;
        }
        ReachabilityMonitor::setFactory([script](const QString& hostName) {
            script->hostName = hostName;
            return std::make_unique<FakeReachabilityMonitor>(*script);
        });
    }

    bool setCallback(Callback callback, void* context) override {
        if (script_.refuseCallback) {
            return false;
        }
        callback_ = std::move(callback);
        context_ = context;
        return true;
    }
    bool setDispatchQueue(DispatchQueuePtr queue) override {
        if (script_.refuseQueue) {
            return false;
        }
        queue_ = std::move(queue);
        return true;
    }
    Flags flags() const override { return flags_; }

    void deliver(Flags flags) {
        flags_ = flags;
        if (callback_ && queue_) {
            queue_->async(
                [callback = callback_, context = context_, flags] { callback(flags, context); });
        }
    }
    bool isListening() const { return callback_ && queue_; }
    QString queueLabel() const { return queue_ ? queue_->label() : QString(); }

private:
    Script& script_;
    Callback callback_;
    void* context_ = nullptr;
    DispatchQueuePtr queue_;
    Flags flags_ = 0;
};

}  // namespace vl::test
