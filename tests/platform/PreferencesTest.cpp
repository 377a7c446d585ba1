#include "platform/app/Preferences.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPoint>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace vl {
namespace {

class PreferencesTest : public ::testing::Test {
protected:
    QString file(const QString& name = QStringLiteral("prefs.conf")) const {
        return dir_.filePath(name);
    }
    QByteArray fileText(const QString& path) const {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    QTemporaryDir dir_;
};

TEST_F(PreferencesTest, ValueWrittenByOneInstanceIsReadByAnotherOnTheSameFile) {
    Preferences writer(file());
    Preferences reader(file());
    EXPECT_FALSE(reader.value(QStringLiteral("GridMode")).isValid());

    writer.setValue(QStringLiteral("GridMode"), true);
    ASSERT_TRUE(writer.synchronize());
    EXPECT_TRUE(reader.value(QStringLiteral("GridMode")).toBool());

    // The reader has the file cached by now; a later change must still be seen.
    writer.setValue(QStringLiteral("GridMode"), false);
    ASSERT_TRUE(writer.synchronize());
    EXPECT_FALSE(reader.value(QStringLiteral("GridMode")).toBool());
    EXPECT_TRUE(reader.contains(QStringLiteral("GridMode")));

    writer.remove(QStringLiteral("GridMode"));
    ASSERT_TRUE(writer.synchronize());
    EXPECT_FALSE(reader.contains(QStringLiteral("GridMode")));
}

TEST_F(PreferencesTest, ValueWrittenByAnotherProcessIsRead) {
    Preferences prefs(file());
    prefs.setValue(QStringLiteral("VLLogLevel"), 3);
    ASSERT_TRUE(prefs.synchronize());
    ASSERT_EQ(prefs.value(QStringLiteral("VLLogLevel")).toInt(), 3);

    // Same size as the file the store has cached, written by a shell. QSettings notices a change
    // by size and modification time, and file times move in clock ticks of a few milliseconds:
    // the write is dated a second later, as another process's write would be at least a tick
    // later, instead of waiting for the clock.
    const QDateTime written = QFileInfo(file()).lastModified();
    const int status = QProcess::execute(
        QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("printf '[General]\\nVLLogLevel=7\\n' > \"$0\""),
         file()});
    ASSERT_EQ(status, 0);
    {
        QFile other(file());
        ASSERT_TRUE(other.open(QIODevice::ReadWrite));
        ASSERT_TRUE(other.setFileTime(written.addSecs(1), QFileDevice::FileModificationTime));
    }
    EXPECT_EQ(prefs.value(QStringLiteral("VLLogLevel")).toInt(), 7);
}

TEST_F(PreferencesTest, PlainValuesAreStoredAsTextOthersAreRefused) {
    Preferences prefs(file());
    const QDateTime when(QDate(2024, 3, 5), QTime(10, 20, 30, 400), Qt::UTC);
    prefs.setValue(QStringLiteral("count"), 12);
    prefs.setValue(QStringLiteral("ratio"), 0.25);
    prefs.setValue(QStringLiteral("when"), when);
    prefs.setValue(QStringLiteral("blob"), QByteArray("\x00\x01\xff", 3));
    prefs.setValue(QStringLiteral("point"), QPoint(1, 2));
    prefs.setValue(QStringLiteral("list"), QVariantList{1, 2});
    ASSERT_TRUE(prefs.synchronize());

    Preferences reader(file());
    EXPECT_EQ(reader.value(QStringLiteral("count")).toInt(), 12);
    EXPECT_DOUBLE_EQ(reader.value(QStringLiteral("ratio")).toDouble(), 0.25);
    EXPECT_EQ(reader.value(QStringLiteral("when")).toString(),
              QStringLiteral("2024-03-05T10:20:30.400Z"));
    EXPECT_EQ(QByteArray::fromBase64(reader.value(QStringLiteral("blob")).toString().toLatin1()),
              QByteArray("\x00\x01\xff", 3));
    EXPECT_FALSE(reader.contains(QStringLiteral("point")));
    EXPECT_FALSE(reader.contains(QStringLiteral("list")));
    EXPECT_FALSE(fileText(file()).contains("@"));  // no QVariant or QByteArray blobs
}

TEST_F(PreferencesTest, SynchronizeFailsWhereTheFileCannotBeWrittenAndRecoversLater) {
    // A regular file in place of the directory fails even for root.
    const QString blocker = file(QStringLiteral("blocker"));
    {
        QFile f(blocker);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    const QString path = blocker + QStringLiteral("/prefs.conf");
    Preferences prefs(path);
    prefs.setValue(QStringLiteral("QuickLaunch"), true);
    EXPECT_FALSE(prefs.synchronize());
    EXPECT_TRUE(prefs.value(QStringLiteral("QuickLaunch")).toBool());  // kept in memory

    ASSERT_TRUE(QFile::remove(blocker));
    ASSERT_TRUE(QDir().mkpath(blocker));
    EXPECT_TRUE(prefs.synchronize());
    EXPECT_TRUE(Preferences(path).value(QStringLiteral("QuickLaunch")).toBool());
}

TEST(PreferenceStores, ContainerAddressedStoresAreOneFilePerContainer) {
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    const QString app = QStringLiteral("com.tessaly.VelloraApp");
    Preferences& a = Preferences::containerAddressed(app, QStringLiteral("/containers/a"));
    Preferences& b = Preferences::containerAddressed(app, QStringLiteral("/containers/b"));
    Preferences& none = Preferences::containerAddressed(app, QString());
    EXPECT_EQ(&a, &Preferences::containerAddressed(app, QStringLiteral("/containers/a")));
    EXPECT_NE(a.filePath(), b.filePath());
    EXPECT_TRUE(a.filePath().startsWith(config + QStringLiteral("/com.tessaly.VelloraApp/")));
    EXPECT_EQ(none.filePath(), config + QStringLiteral("/com.tessaly.VelloraApp/"
                                                       "ContainerPreferences.conf"));

    a.setValue(QStringLiteral("GridMode"), true);
    ASSERT_TRUE(a.synchronize());
    EXPECT_FALSE(b.contains(QStringLiteral("GridMode")));
    EXPECT_FALSE(Preferences::standard().contains(QStringLiteral("GridMode")));
    EXPECT_EQ(Preferences::standard().filePath(),
              config + QStringLiteral("/com.tessaly.VelloraApp/com.tessaly.VelloraApp.conf"));
}

TEST(PreferenceStores, AppContainerPathIsCreatedUnderTheDataDirectory) {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString path = Preferences::appContainerPath(QStringLiteral("com.tessaly.VelloraApp"));
    EXPECT_EQ(path, data + QStringLiteral("/Containers/com.tessaly.VelloraApp"));
    EXPECT_TRUE(QFileInfo(path).isDir());
    EXPECT_TRUE(Preferences::appContainerPath(QString()).isEmpty());
    EXPECT_TRUE(Preferences::appContainerPath(QStringLiteral("../escape")).isEmpty());
}

}  // namespace
}  // namespace vl
