#pragma once

#include "platform/dispatch/Dispatch.h"

namespace vl {

// The main queue of the real backend: blocks are events of the application's event loop, so they
// run on the main thread, in the order they were posted, whenever the loop turns.
class RealMainQueue final : public DispatchQueue,
                            public std::enable_shared_from_this<RealMainQueue> {
public:
    static inline const QString kLabel = QStringLiteral("com.tessaly.main-thread");

    QString label() const override;
    void async(DispatchBlock block) override;
    void sync(DispatchBlock block) override;
    void asyncAt(DispatchTime when, DispatchBlock block) override;
    DispatchTime now() const override;

    // True on the thread of the application object (false before there is one).
    static bool isMainThread();

private:
    void run(const DispatchBlock& block);
    void startTimer(DispatchTime when, std::shared_ptr<DispatchBlock> block);
};

}  // namespace vl
