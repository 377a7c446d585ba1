#include "app/Settings.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

using namespace vl;

namespace {

const char* const ChildVariable = "VELLORA_SETTINGS_CHILD";

// Runs one test of this binary in a new process, with the same XDG directories.
int runChild(const char* test, const char* action) {
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(ChildVariable), QString::fromLatin1(action));
    child.setProcessEnvironment(environment);
    // Child-only tests are disabled, so that CTest neither lists nor runs them on their own.
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--gtest_filter=%1").arg(QLatin1String(test)),
                 QStringLiteral("--gtest_also_run_disabled_tests")});
    if (!child.waitForFinished(60000)) {
        return -1;
    }
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -1;
}

}  // namespace

TEST(Settings, GridModeDefaultsToNoAndPersistsAcrossProcesses) {
    EXPECT_FALSE(Settings::gridMode());
    Settings::setGridMode(true);
    EXPECT_TRUE(Settings::gridMode());
    EXPECT_EQ(runChild("SettingsChild.DISABLED_ReadsGridMode", "expect-yes"), 0);

    // A value written by another process is read here without a restart.
    EXPECT_EQ(runChild("SettingsChild.DISABLED_WritesGridModeNo", "write-no"), 0);
    EXPECT_FALSE(Settings::gridMode());
}

TEST(Settings, QuickLaunchIsAlwaysOn) {
    Settings::setQuickLaunch(false);
    EXPECT_TRUE(Settings::quickLaunch());
    // What was written is still stored for whoever reads the key itself.
    EXPECT_FALSE(Settings::boolPrefForKeyWithDefault(QStringLiteral("QuickLaunch"), true));
}

TEST(Settings, MissingKeysGiveTheDefault) {
    EXPECT_TRUE(Settings::boolPrefForKeyWithDefault(QStringLiteral("NeverWritten"), true));
    EXPECT_FALSE(Settings::boolPrefForKeyWithDefault(QStringLiteral("NeverWritten"), false));
}

TEST(SettingsChild, DISABLED_ReadsGridMode) {
    ASSERT_EQ(qgetenv(ChildVariable), QByteArray("expect-yes"));
    EXPECT_TRUE(Settings::gridMode());
}

TEST(SettingsChild, DISABLED_WritesGridModeNo) {
    ASSERT_EQ(qgetenv(ChildVariable), QByteArray("write-no"));
    Settings::setGridMode(false);
}
