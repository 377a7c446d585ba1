#include "logging/VLSLSClient.h"

#include "logging/VLLogging.h"
#include "platform/app/Preferences.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cstdlib>
#include <mutex>

namespace vl {

namespace {

std::mutex markerMutex;
// Never destroyed, like the shared client that reads it.
QString& markerPathStorage() {
    static QString& path = *new QString(QString::fromLatin1(VLSLSClient::DefaultMarkerFilePath));
    return path;
}

}  // namespace

VLSLSClient* VLSLSClient::SLSClient() {
    // Never destroyed: records may still be logged while static objects are torn down.
    static VLSLSClient* const shared = new VLSLSClient();
    return shared;
}

VLSLSClient::VLSLSClient() {
    // Logging keeps real time even where a test runs the rest of the process on virtual time.
    logQueue_ = Dispatch::realDispatcher()->createSerialQueue(QString::fromLatin1(QueueLabel),
                                                              QualityOfService::Utility, -15);
    logQueue_->sync([this] {
        setSlsClient(SystemLogService::open(nullptr, Facility, 0));
        setLogLevelFromDefaults();
    });
    qAddPostRoutine([] { SLSClient()->prepareForExit(); });
}

VLSLSClient::~VLSLSClient() {
    logQueue_->sync([this] {
        SystemLogService::close(slsClient_);
        slsClient_ = nullptr;
    });
}

int VLSLSClient::logLevel() const {
    return logging::clientLevel.load(std::memory_order_relaxed);
}

void VLSLSClient::setLogLevel(int level) {
    logging::clientLevel.store(level, std::memory_order_relaxed);
    logQueue_->sync([this] {
        SystemLogService::setFilter(slsClient_, SystemLogService::filterUpTo(logLevelForSLS()));
    });
}

int VLSLSClient::logLevelForSLS() const {
    return std::min(logLevel(), 7);
}

void VLSLSClient::performLoggingBlock(DispatchBlock block) {
    logQueue_->async(std::move(block));
}

void VLSLSClient::performLoggingBlockAfter(DispatchDuration delay, DispatchBlock block) {
    logQueue_->after(delay, std::move(block));
}

void VLSLSClient::prepareForExit() {
    exiting_.store(true, std::memory_order_release);
    flush();
}

void VLSLSClient::setPendingRecordsDrain(DispatchBlock drain) {
    std::lock_guard lock(drainMutex_);
    pendingRecordsDrain_ = std::move(drain);
}

void VLSLSClient::flush() {
    DispatchBlock drain;
    {
        std::lock_guard lock(drainMutex_);
        drain = pendingRecordsDrain_;
    }
    logQueue_->sync([&drain] {
        if (drain) {
            drain();
        }
    });
}

void VLSLSClient::setLogLevelFromDefaults() {
    static std::once_flag registered;
    std::call_once(registered, [this] {
        NotificationCenter::defaultCenter().addObserver(
            Notifications::ManagedPreferencesDidChange, logQueue_,
            [](const Notification&) { SLSClient()->setLogLevelFromDefaults(); });
    });

    Preferences& defaults = Preferences::standard();
    defaults.synchronize();
    const int preference = defaults.value(QStringLiteral("VLLogLevel")).toInt();

    const bool marker = QFileInfo::exists(markerFilePath());
    const int level = marker ? 8 : (preference > 2 ? preference : 6);
    logging::clientLevel.store(level, std::memory_order_relaxed);
    SystemLogService::setFilter(slsClient_, SystemLogService::filterUpTo(logLevelForSLS()));

    if (!marker && level < 8) {
        ::unsetenv("SLS_QUOTA_DISABLED");
    } else {
        ::setenv("SLS_QUOTA_DISABLED", "1", 1);
        // Never from the log queue itself: the shared client may still be in its creation.
        Dispatch::realDispatcher()->globalQueue(QualityOfService::Default)->async([] {
            VLLOG(7, "Unthrottling logging");
        });
    }
}

QString VLSLSClient::markerFilePath() {
    std::lock_guard lock(markerMutex);
    return markerPathStorage();
}

void VLSLSClient::setMarkerFilePath(const QString& path) {
    std::lock_guard lock(markerMutex);
    markerPathStorage() = path;
}

}  // namespace vl
