#pragma once

#include "platform/dispatch/Dispatch.h"

#include <deque>
#include <map>

namespace vl {

class VirtualDispatcher;

// One queue of a VirtualDispatcher. It only holds the queue's blocks; the dispatcher decides when
// they run, and its mutex guards every field below except the label.
class VirtualQueue final : public DispatchQueue {
public:
    VirtualQueue(const QString& label, std::weak_ptr<VirtualDispatcher> owner);

    QString label() const override;
    void async(DispatchBlock block) override;
    void sync(DispatchBlock block) override;
    void asyncAt(DispatchTime when, DispatchBlock block) override;
    DispatchTime now() const override;

private:
    friend class VirtualDispatcher;
    using TimedKey = std::pair<DispatchTime, quint64>;  // deadline, then submission order

    const QString label_;
    const std::weak_ptr<VirtualDispatcher> owner_;
    std::deque<std::pair<quint64, DispatchBlock>> ready_;  // due, in the order they came due
    std::map<TimedKey, DispatchBlock> timed_;              // not yet due
    bool busy_ = false;                                    // one of its blocks is running
    bool released_ = false;                                // its last handle is gone
};

}  // namespace vl
