#include "drive/network/LinkStateReader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

// A fake /sys/class/net and /proc/net.
class LinkStateReaderTest : public ::testing::Test {
protected:
    QTemporaryDir root;
    QString sys() const { return root.path() + QStringLiteral("/sys"); }
    QString proc() const { return root.path() + QStringLiteral("/proc"); }
    LinkStateReader reader() const { return LinkStateReader(sys(), proc()); }

    void write(const QString& path, const QByteArray& content) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
    }
    void addInterface(const char* name, const char* operstate, const char* devtype = nullptr,
                      const char* flags = "0x1003") {
        const QString dir = sys() + QLatin1Char('/') + QLatin1String(name);
        write(dir + QStringLiteral("/operstate"), QByteArray(operstate) + '\n');
        write(dir + QStringLiteral("/flags"), QByteArray(flags) + '\n');
        QByteArray uevent = "INTERFACE=" + QByteArray(name) + "\nIFINDEX=2\n";
        if (devtype) {
            uevent += "DEVTYPE=" + QByteArray(devtype) + '\n';
        }
        write(dir + QStringLiteral("/uevent"), uevent);
    }
    void setDefaultRoutes(QList<const char*> interfaces) {
        QByteArray table =
            "Iface\tDestination\tGateway \tFlags\tRefCnt\tUse\tMetric\tMask\t\tMTU\tWindow\tIRTT\n";
        for (const char* name : interfaces) {
            table +=
                QByteArray(name) + "\t00000000\t0102A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n";
        }
        table += "eth9\t0002A8C0\t00000000\t0001\t0\t0\t100\t00FFFFFF\t0\t0\t0\n";
        write(proc() + QStringLiteral("/route"), table);
    }
};

TEST_F(LinkStateReaderTest, ADefaultRouteOverALinkThatIsUpIsReachable) {
    addInterface("lo", "unknown", nullptr, "0x9");
    addInterface("eth0", "up");
    addInterface("wlan0", "up", "wlan");
    addInterface("wwan0", "up", "wwan");

    setDefaultRoutes({});
    EXPECT_EQ(reader().currentFlags(), 0u);

    setDefaultRoutes({"wlan0"});
    EXPECT_EQ(reader().currentFlags(), ReachabilityMonitor::Reachable);

    setDefaultRoutes({"wwan0"});
    EXPECT_EQ(reader().currentFlags(),
              ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN);

    // Any route that is not cellular makes the path not cellular.
    setDefaultRoutes({"wwan0", "eth0"});
    EXPECT_EQ(reader().currentFlags(), ReachabilityMonitor::Reachable);
}

TEST_F(LinkStateReaderTest, LinksThatAreDownDoNotCount) {
    addInterface("eth0", "down");
    addInterface("wwan0", "up", "wwan");
    setDefaultRoutes({"eth0"});
    EXPECT_EQ(reader().currentFlags(), 0u);
    setDefaultRoutes({"eth0", "wwan0"});
    EXPECT_EQ(reader().currentFlags(),
              ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN);

    // A point-to-point link reports "unknown" and is up by its carrier.
    addInterface("ppp0", "unknown");
    write(sys() + QStringLiteral("/ppp0/carrier"), "1\n");
    setDefaultRoutes({"ppp0"});
    EXPECT_EQ(reader().currentFlags(), ReachabilityMonitor::Reachable);
}

TEST_F(LinkStateReaderTest, Ipv6DefaultRoutesCountButNotTheLoopbacksUnreachableOne) {
    addInterface("lo", "unknown", nullptr, "0x9");
    write(sys() + QStringLiteral("/lo/carrier"), "1\n");
    addInterface("wlan0", "up", "wlan");
    setDefaultRoutes({});
    const QByteArray zero(32, '0');
    write(proc() + QStringLiteral("/ipv6_route"),
          zero + " 00 " + zero + " 00 " + zero + " ffffffff 00000001 00000000 00200200       lo\n");
    EXPECT_EQ(reader().currentFlags(), 0u);
    write(proc() + QStringLiteral("/ipv6_route"),
          zero + " 00 " + zero +
              " 00 fe800000000000000000000000000001 00000400 00000001 "
              "00000000 00000003    wlan0\n");
    EXPECT_EQ(reader().currentFlags(), ReachabilityMonitor::Reachable);
}

TEST_F(LinkStateReaderTest, WithoutRouteTablesAnyLinkThatIsUpCounts) {
    addInterface("lo", "unknown", nullptr, "0x9");
    write(sys() + QStringLiteral("/lo/carrier"), "1\n");
    EXPECT_EQ(reader().currentFlags(), 0u);
    addInterface("wwan0", "up", "wwan");
    EXPECT_EQ(reader().currentFlags(),
              ReachabilityMonitor::Reachable | ReachabilityMonitor::IsWWAN);
    addInterface("eth0", "up");
    EXPECT_EQ(reader().currentFlags(), ReachabilityMonitor::Reachable);
}

}  // namespace
}  // namespace vl
