#include "platform/dispatch/Dispatch.h"

namespace vl {

namespace {
thread_local DispatchQueue* currentOnThisThread = nullptr;
}

CurrentQueueScope::CurrentQueueScope(DispatchQueue* queue) : previous_(currentOnThisThread) {
    currentOnThisThread = queue;
}

CurrentQueueScope::~CurrentQueueScope() {
    currentOnThisThread = previous_;
}

DispatchQueue* CurrentQueueScope::current() {
    return currentOnThisThread;
}

}  // namespace vl
