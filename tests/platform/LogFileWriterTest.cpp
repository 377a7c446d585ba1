#include "platform/log/LogFileWriter.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// The writer keeps its descriptor open and looks at the path at most once a second, by its own
// clock, which the test moves.
TEST(LogFileWriterTest, ALogRotatedByRenameIsLeftOnceASecondHasPassed) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("logs/system.log"));
    const QString rotated = path + QStringLiteral(".1");
    qint64 now = 50'000;
    LogFileWriter writer;
    writer.setClock([&now] { return now; });
    writer.setPath(path);

    ASSERT_TRUE(writer.append("one\n"));  // the folder is made on the way
    ASSERT_TRUE(QFile::rename(path, rotated));
    now += 999;
    ASSERT_TRUE(writer.append("two\n"));
    EXPECT_EQ(contents(rotated), QByteArray("one\ntwo\n")) << "still the open file";
    EXPECT_FALSE(QFile::exists(path));

    now += 1;
    ASSERT_TRUE(writer.append("three\n"));
    EXPECT_EQ(contents(path), QByteArray("three\n"));
    EXPECT_EQ(contents(rotated), QByteArray("one\ntwo\n"));

    // A removed file is noticed at the next line, whatever the clock says.
    ASSERT_TRUE(QFile::remove(path));
    ASSERT_TRUE(writer.append("four\n"));
    EXPECT_EQ(contents(path), QByteArray("four\n"));
}

}  // namespace
}  // namespace vl
