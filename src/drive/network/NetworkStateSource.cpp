#include "drive/network/NetworkStateSource.h"

#include "drive/network/NetworkChangeListener.h"
#include "drive/store/ServiceSettings.h"
#include "logging/VLLogging.h"
#include "platform/dispatch/Dispatch.h"

#include <QCoreApplication>
#include <QNetworkInformation>
#include <QThread>

namespace vl {

namespace {

std::mutex sourcesMutex;
QHash<QString, std::weak_ptr<NetworkStateSource>> sources;  // guarded by sourcesMutex

}  // namespace

std::shared_ptr<NetworkStateSource> NetworkStateSource::forHome(const DriveHome& home) {
    std::lock_guard lock(sourcesMutex);
    if (auto existing = sources.value(home.rootPath()).lock()) {
        return existing;
    }
    auto source = std::make_shared<NetworkStateSource>(home, LinkStateReader());
    source->start();
    sources.insert(home.rootPath(), source);
    return source;
}

std::optional<NetworkStateSource::Flags> NetworkStateSource::overrideFlags(const QString& network) {
    if (network == ServiceSettings::NetworkNone) {
        return 0;
    }
    if (network == ServiceSettings::NetworkWifi) {
        return ReachabilityMonitor::Reachable;
    }
    if (network == ServiceSettings::NetworkCellular) {
        return ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN;
    }
    return std::nullopt;
}

NetworkStateSource::NetworkStateSource(DriveHome home, LinkStateReader reader)
    : home_(std::move(home)), reader_(std::move(reader)) {}

NetworkStateSource::~NetworkStateSource() = default;

void NetworkStateSource::start() {
    {
        std::lock_guard lock(mutex_);
        flags_ = computeFlags();
    }
    std::weak_ptr<NetworkStateSource> weak = weak_from_this();
    changeListener_ = std::make_unique<NetworkChangeListener>(home_.serviceFile(), [weak] {
        if (auto self = weak.lock()) {
            self->refresh();
            // The listener's thread must never drop the last reference: the source's destructor
            // joins that very thread.
            Dispatch::realDispatcher()
                ->globalQueue(QualityOfService::Utility)
                ->async([last = std::move(self)] {});
        }
    });
    startSystemInformation();
}

void NetworkStateSource::startSystemInformation() {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app) {
        return;
    }
    // QNetworkInformation is a main-thread object: load and connect it there.
    auto setUp = [weak = weak_from_this()] {
        using Info = QNetworkInformation;
        if (!Info::instance() &&
            !Info::loadBackendByFeatures(Info::Feature::Reachability |
                                         Info::Feature::TransportMedium) &&
            !Info::loadBackendByName(u"glib")) {
            VLLOG(6, "No network information backend; reading the links instead");
            return;
        }
        Info* info = Info::instance();
        auto self = weak.lock();
        if (!info || !self) {
            return;
        }
        VLLOG(7, "Network information from the %@ backend", info->backendName());
        QObject::connect(info, &Info::reachabilityChanged, info, [weak](Info::Reachability value) {
            if (auto source = weak.lock()) {
                source->systemReachability_ = static_cast<int>(value);
                source->refresh();
            }
        });
        if (info->supports(Info::Feature::TransportMedium)) {
            QObject::connect(info, &Info::transportMediumChanged, info,
                             [weak](Info::TransportMedium value) {
                                 if (auto source = weak.lock()) {
                                     source->systemMedium_ = static_cast<int>(value);
                                     source->refresh();
                                 }
                             });
            self->systemMedium_ = static_cast<int>(info->transportMedium());
        }
        self->systemReachability_ = static_cast<int>(info->reachability());
        self->refresh();
    };
    if (QThread::currentThread() == app->thread()) {
        setUp();
    } else {
        Dispatch::mainQueue()->async(std::move(setUp));
    }
}

NetworkStateSource::Flags NetworkStateSource::systemFlags(
    std::optional<QNetworkInformation::Reachability> reachability,
    std::optional<QNetworkInformation::TransportMedium> medium, Flags links) {
    using Info = QNetworkInformation;
    if (!reachability || *reachability == Info::Reachability::Unknown) {
        return links;
    }
    if (*reachability != Info::Reachability::Online && *reachability != Info::Reachability::Site) {
        return 0;
    }
    const bool cellular = !medium || *medium == Info::TransportMedium::Unknown
                              ? (links & ReachabilityMonitor::IsWWAN) != 0
                              : *medium == Info::TransportMedium::Cellular;
    return ReachabilityMonitor::Reachable | (cellular ? ReachabilityMonitor::IsWWAN : 0);
}

NetworkStateSource::Flags NetworkStateSource::systemFlags() const {
    using Info = QNetworkInformation;
    const int reachability = systemReachability_;
    const int medium = systemMedium_;
    return systemFlags(
        reachability < 0 ? std::nullopt
                         : std::optional(static_cast<Info::Reachability>(reachability)),
        medium < 0 ? std::nullopt : std::optional(static_cast<Info::TransportMedium>(medium)),
        reader_.currentFlags());
}

NetworkStateSource::Flags NetworkStateSource::computeFlags() const {
    Error error;
    const ServiceSettings settings = ServiceSettings::read(home_.serviceFile(), &error);
    if (const auto forced = overrideFlags(settings.network)) {
        return *forced;
    }
    return systemFlags();
}

NetworkStateSource::Flags NetworkStateSource::flags() const {
    std::lock_guard lock(mutex_);
    return flags_;
}

void NetworkStateSource::refresh() {
    std::lock_guard refreshing(refreshMutex_);
    const Flags current = computeFlags();
    QList<Listener> toCall;
    {
        std::lock_guard lock(mutex_);
        if (current == flags_) {
            return;
        }
        flags_ = current;
        toCall = listeners_.values();
    }
    VLLOG(7, "Reachability of %@ is now 0x%x", home_.rootPath(), current);
    for (const Listener& listener : toCall) {
        listener(current);
    }
}

quint64 NetworkStateSource::addListener(Listener listener) {
    std::lock_guard lock(mutex_);
    const quint64 token = nextToken_++;
    listeners_.insert(token, std::move(listener));
    return token;
}

void NetworkStateSource::removeListener(quint64 token) {
    std::lock_guard lock(mutex_);
    listeners_.remove(token);
}

}  // namespace vl
