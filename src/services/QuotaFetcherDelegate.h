#pragma once

#include <QtGlobal>

#include <memory>

namespace vl {

class QuotaFetcher;

// Hears the free bytes of the account's cloud storage, on the main thread. Optional: a delegate
// that does not override it hears nothing, and the fetcher still keeps the value.
class QuotaFetcherDelegate {
public:
    virtual ~QuotaFetcherDelegate() = default;

    virtual void quotaFetcherDidUpdateValue(const std::shared_ptr<QuotaFetcher>& fetcher,
                                            quint64 freeBytes) {
        Q_UNUSED(fetcher);
        Q_UNUSED(freeBytes);
    }
};

}  // namespace vl
