#pragma once

#include "platform/app/NotificationCenter.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/log/SystemLogService.h"

#include <QString>

#include <atomic>
#include <mutex>

namespace vl {

// The shared logging client: owns the serial log queue on which records are built and sent to the
// system log service, and the client level read from the "VLLogLevel" preference and the marker
// file.
//
// Threading: `logLevel` is a plain word written by setLogLevel() on the caller's thread and by
// setLogLevelFromDefaults() on the log queue, and read anywhere; `slsClient` and the filter are
// touched only on the log queue (init/setLogLevel/dealloc wait for it synchronously).
class VLSLSClient {
public:
    static constexpr const char* Facility = "com.tessaly.VelloraApp";
    static constexpr const char* QueueLabel = "com.tessaly.velloraapp.logging";

    // The shared client, created once per process on first use; it lives until the process ends.
    static VLSLSClient* SLSClient();

    ~VLSLSClient();
    VLSLSClient(const VLSLSClient&) = delete;
    VLSLSClient& operator=(const VLSLSClient&) = delete;

    SystemLogService::Client slsClient() const { return slsClient_; }
    void setSlsClient(SystemLogService::Client client) { slsClient_ = client; }
    int logLevel() const;
    // Stores the level at once, then waits on the log queue to set the system log filter.
    void setLogLevel(int level);
    // The level clamped to at most 7 (no lower clamp).
    int logLevelForSLS() const;
    DispatchQueuePtr logQueue() const { return logQueue_; }
    void performLoggingBlock(DispatchBlock block);
    void performLoggingBlockAfter(DispatchDuration delay, DispatchBlock block);
    // What flush() runs on the log queue to send records still gathering for a later block.
    void setPendingRecordsDrain(DispatchBlock drain);
    // Re-reads the level from the preference and the marker file; runs on the log queue.
    void setLogLevelFromDefaults();

    // Waits until every record logged so far has been sent and every block handed to the log
    // queue so far has run (delayed ones excepted).
    void flush();
    // Sends what is gathering; later records are sent on the thread that logs them: a record
    // logged while static objects are torn down must not be sent from another thread in the
    // middle of that. Runs when the application object goes, at the end of main().
    void prepareForExit();
    bool isExiting() const { return exiting_.load(std::memory_order_acquire); }

    // The marker file that forces the maximum level; tests point it elsewhere.
    static QString markerFilePath();
    static void setMarkerFilePath(const QString& path);
    static constexpr const char* DefaultMarkerFilePath = "/etc/vl_hella_logging";

private:
    VLSLSClient();

    SystemLogService::Client slsClient_ = nullptr;  // log queue only
    DispatchQueuePtr logQueue_;
    std::atomic<bool> exiting_{false};
    std::mutex drainMutex_;
    DispatchBlock pendingRecordsDrain_;  // guarded by drainMutex_
    // The level itself is logging::clientLevel, so that VLLogIsEnabled() is one comparison.
};

}  // namespace vl
