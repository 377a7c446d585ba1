#include "drive/network/NetworkStateSource.h"
#include "drive/store/ServiceSettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

using Info = QNetworkInformation;
using Flags = ReachabilityMonitor::Flags;
constexpr Flags kWifi = ReachabilityMonitor::Reachable;
constexpr Flags kCellular = ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN;

// With no override, the system's answer decides where it knows, the links where it does not.
TEST(NetworkStateSourceTest, SystemReachabilityMergesWithTheLinks) {
    using R = Info::Reachability;
    using M = Info::TransportMedium;
    const struct {
        std::optional<R> reachability;
        std::optional<M> medium;
        Flags links;
        Flags expected;
    } cases[] = {
        // Before the system answered, or when it does not know: the links alone.
        {std::nullopt, std::nullopt, 0, 0},
        {std::nullopt, std::nullopt, kWifi, kWifi},
        {std::nullopt, M::WiFi, kCellular, kCellular},
        {R::Unknown, M::Cellular, kWifi, kWifi},
        {R::Unknown, std::nullopt, 0, 0},
        // Not online: nothing reachable, whatever the links say.
        {R::Disconnected, M::WiFi, kWifi, 0},
        {R::Local, M::Ethernet, kCellular, 0},
        // Online: reachable; cellular by the medium when known, else by the links.
        {R::Online, M::WiFi, 0, kWifi},
        {R::Online, M::Ethernet, kCellular, kWifi},
        {R::Online, M::Cellular, kWifi, kCellular},
        {R::Online, M::Unknown, kCellular, kCellular},
        {R::Online, std::nullopt, kWifi, kWifi},
        {R::Online, std::nullopt, 0, kWifi},
        {R::Site, M::Bluetooth, 0, kWifi},
        {R::Site, M::Cellular, 0, kCellular},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(NetworkStateSource::systemFlags(c.reachability, c.medium, c.links), c.expected)
            << "reachability " << (c.reachability ? int(*c.reachability) : -1) << ", medium "
            << (c.medium ? int(*c.medium) : -1) << ", links 0x" << std::hex << c.links;
    }
}

// A source over a home whose setting is "auto" and a fake link tree, before the system answers:
// what a person gets on a machine where QNetworkInformation knows nothing.
TEST(NetworkStateSourceTest, WithoutAnOverrideTheLinksDecideUntilTheSettingChanges) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const DriveHome home(dir.path() + QStringLiteral("/home"));
    ASSERT_TRUE(QDir().mkpath(home.rootPath()));
    const QString sys = dir.path() + QStringLiteral("/sys");
    const QString proc = dir.path() + QStringLiteral("/proc");
    auto write = [](const QString& path, const QByteArray& content) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
    };
    write(sys + QStringLiteral("/wwan0/operstate"), "up\n");
    write(sys + QStringLiteral("/wwan0/flags"), "0x1003\n");
    write(sys + QStringLiteral("/wwan0/uevent"), "INTERFACE=wwan0\nDEVTYPE=wwan\n");
    write(proc + QStringLiteral("/route"),
          "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n"
          "wwan0\t00000000\t0102A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n");
    ServiceSettings settings;
    settings.network = ServiceSettings::NetworkAuto;
    ASSERT_FALSE(settings.write(home.serviceFile()));

    NetworkStateSource source(home, LinkStateReader(sys, proc));
    std::vector<Flags> heard;
    source.addListener([&](Flags flags) { heard.push_back(flags); });
    source.refresh();
    EXPECT_EQ(source.flags(), kCellular);

    write(sys + QStringLiteral("/wwan0/operstate"), "down\n");
    source.refresh();
    EXPECT_EQ(source.flags(), 0u);

    settings.network = ServiceSettings::NetworkWifi;
    ASSERT_FALSE(settings.write(home.serviceFile()));
    source.refresh();
    source.refresh();
    EXPECT_EQ(heard, (std::vector<Flags>{kCellular, 0, kWifi})) << "each change heard once";
}

}  // namespace
}  // namespace vl
