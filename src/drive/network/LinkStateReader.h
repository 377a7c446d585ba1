#pragma once

#include "platform/cloud/ReachabilityMonitor.h"

#include <QString>
#include <QStringList>

namespace vl {

// Reachability read from the kernel's own files, for machines where QNetworkInformation knows
// nothing: the interfaces that carry a default route (/proc/net/route, /proc/net/ipv6_route) and
// are up (/sys/class/net/<if>/operstate and carrier). Reachable when one of them is; cellular when
// every such interface is a mobile broadband one (DEVTYPE=wwan in its uevent). Without readable
// route tables, any interface that is up and not the loopback counts.
//
// The directories are parameters so that tests can give it a tree of their own. Stateless.
class LinkStateReader {
public:
    explicit LinkStateReader(QString sysClassNetDir = QStringLiteral("/sys/class/net"),
                             QString procNetDir = QStringLiteral("/proc/net"));

    ReachabilityMonitor::Flags currentFlags() const;

    // Interfaces with a default route; absent when neither route table can be read.
    std::optional<QStringList> defaultRouteInterfaces() const;
    bool isUp(const QString& interface) const;
    bool isLoopback(const QString& interface) const;
    // "wlan", "wwan", ... from the interface's uevent; empty for wired and virtual links.
    QString deviceType(const QString& interface) const;

private:
    QString sysClassNetDir_;
    QString procNetDir_;
};

}  // namespace vl
