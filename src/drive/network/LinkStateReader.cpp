#include "drive/network/LinkStateReader.h"

#include <QDir>
#include <QFile>

#include <optional>

namespace vl {

namespace {

constexpr unsigned RouteFlagUp = 0x1;            // RTF_UP
constexpr unsigned InterfaceFlagLoopback = 0x8;  // IFF_LOOPBACK

std::optional<QByteArray> readSmallFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.read(64 * 1024);
}

}  // namespace

LinkStateReader::LinkStateReader(QString sysClassNetDir, QString procNetDir)
    : sysClassNetDir_(std::move(sysClassNetDir)), procNetDir_(std::move(procNetDir)) {}

std::optional<QStringList> LinkStateReader::defaultRouteInterfaces() const {
    const auto v4 = readSmallFile(procNetDir_ + QStringLiteral("/route"));
    const auto v6 = readSmallFile(procNetDir_ + QStringLiteral("/ipv6_route"));
    if (!v4 && !v6) {
        return std::nullopt;
    }
    QStringList interfaces;
    auto add = [&](const QByteArray& name) {
        const QString interface = QString::fromLatin1(name);
        if (!interfaces.contains(interface)) {
            interfaces.append(interface);
        }
    };
    if (v4) {
        // Iface Destination Gateway Flags ...; the first line is the header.
        const QList<QByteArray> lines = v4->split('\n');
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const QList<QByteArray> fields = lines[i].simplified().split(' ');
            if (fields.size() < 4) {
                continue;
            }
            bool ok = false;
            const unsigned flags = fields[3].toUInt(&ok, 16);
            if (fields[1] == "00000000" && ok && (flags & RouteFlagUp)) {
                add(fields[0]);
            }
        }
    }
    if (v6) {
        // dest prefixlen src srcprefixlen nexthop metric refcnt use flags iface; the kernel keeps
        // an unreachable default route on the loopback, which is no route out.
        for (const QByteArray& line : v6->split('\n')) {
            const QList<QByteArray> fields = line.simplified().split(' ');
            if (fields.size() < 10) {
                continue;
            }
            bool ok = false;
            const unsigned flags = fields[8].toUInt(&ok, 16);
            if (fields[0] == QByteArray(32, '0') && fields[1] == "00" && ok &&
                (flags & RouteFlagUp) && !isLoopback(QString::fromLatin1(fields[9]))) {
                add(fields[9]);
            }
        }
    }
    return interfaces;
}

bool LinkStateReader::isUp(const QString& interface) const {
    const QString dir = sysClassNetDir_ + QLatin1Char('/') + interface;
    const auto operstate = readSmallFile(dir + QStringLiteral("/operstate"));
    if (!operstate) {
        return false;
    }
    const QByteArray state = operstate->trimmed();
    if (state == "up") {
        return true;
    }
    // Point-to-point and some virtual links never report "up"; their carrier says it.
    if (state == "unknown") {
        const auto carrier = readSmallFile(dir + QStringLiteral("/carrier"));
        return carrier && carrier->trimmed() == "1";
    }
    return false;
}

bool LinkStateReader::isLoopback(const QString& interface) const {
    const auto flags =
        readSmallFile(sysClassNetDir_ + QLatin1Char('/') + interface + QStringLiteral("/flags"));
    if (flags) {
        bool ok = false;
        const unsigned value = flags->trimmed().toUInt(&ok, 0);
        if (ok) {
            return (value & InterfaceFlagLoopback) != 0;
        }
    }
    return interface == QLatin1String("lo");
}

QString LinkStateReader::deviceType(const QString& interface) const {
    const auto uevent =
        readSmallFile(sysClassNetDir_ + QLatin1Char('/') + interface + QStringLiteral("/uevent"));
    if (!uevent) {
        return {};
    }
    for (const QByteArray& line : uevent->split('\n')) {
        if (line.startsWith("DEVTYPE=")) {
            return QString::fromLatin1(line.mid(8).trimmed());
        }
    }
    return {};
}

ReachabilityMonitor::Flags LinkStateReader::currentFlags() const {
    QStringList candidates;
    if (const auto routed = defaultRouteInterfaces()) {
        candidates = *routed;
    } else {
        candidates =
            QDir(sysClassNetDir_).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::System);
    }
    bool reachable = false;
    bool onlyCellular = true;
    for (const QString& interface : candidates) {
        if (isLoopback(interface) || !isUp(interface)) {
            continue;
        }
        reachable = true;
        if (deviceType(interface) != QLatin1String("wwan")) {
            onlyCellular = false;
        }
    }
    if (!reachable) {
        return 0;
    }
    return ReachabilityMonitor::Reachable | (onlyCellular ? ReachabilityMonitor::IsWWAN : 0);
}

}  // namespace vl
