#include "app/DisplayPlatform.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace vl;

namespace {

// A plugin folder holding the platform plugin libraries named.
class DisplayPlatformTest : public ::testing::Test {
protected:
    QStringList pluginFolders(const QStringList& libraries) {
        EXPECT_TRUE(QDir().mkpath(dir_.path() + QStringLiteral("/platforms")));
        for (const QString& library : libraries) {
            QFile file(dir_.path() + QStringLiteral("/platforms/") + library);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        }
        return {dir_.path()};
    }

    QTemporaryDir dir_;
};

const QString Wayland = QStringLiteral("libqwayland-generic.so");
const QString X11 = QStringLiteral("libqxcb.so");

TEST_F(DisplayPlatformTest, AWaylandSessionGetsTheWaylandPluginEvenWithAnX11DisplayBeside) {
    const QStringList folders = pluginFolders({Wayland, X11});
    const DisplayPlatform both(QString(), QStringLiteral("wayland-0"), QStringLiteral(":0"),
                               folders);
    EXPECT_EQ(both.pluginName(), QStringLiteral("wayland"));
    EXPECT_FALSE(both.problem());

    const DisplayPlatform x11(QString(), QString(), QStringLiteral(":0"), folders);
    EXPECT_EQ(x11.pluginName(), QStringLiteral("xcb"));
    EXPECT_FALSE(x11.problem());
}

TEST_F(DisplayPlatformTest, APluginTheUserNamedIsLeftToQt) {
    const DisplayPlatform named(QStringLiteral("offscreen"), QStringLiteral("wayland-0"), QString(),
                                pluginFolders({}));
    EXPECT_TRUE(named.pluginName().isEmpty());
    EXPECT_FALSE(named.problem());
}

TEST_F(DisplayPlatformTest, AMissingWaylandPluginOrNoDisplayIsAProblemWithItsRemedy) {
    const QStringList folders = pluginFolders({X11});
    const DisplayPlatform missing(QString(), QStringLiteral("wayland-0"), QStringLiteral(":0"),
                                  folders);
    ASSERT_TRUE(missing.problem());
    EXPECT_TRUE(missing.problem()->contains(QStringLiteral("qt6-wayland")));
    EXPECT_FALSE(missing.problem()->contains(QLatin1Char('\n')));

    const DisplayPlatform none(QString(), QString(), QString(), folders);
    ASSERT_TRUE(none.problem());
    EXPECT_TRUE(none.problem()->contains(QStringLiteral("make run")));
}

}  // namespace
