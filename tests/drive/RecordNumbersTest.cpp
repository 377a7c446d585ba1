#include "drive/store/AccountRecord.h"
#include "drive/store/PlaceholderFile.h"
#include "drive/store/ServiceSettings.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace vl {
namespace {

// Byte counts are JSON numbers, which may be larger than any unsigned 64-bit count: such a value
// is as wrong as a negative one (found by the record fuzzers).
TEST(RecordNumbersTest, CountsPastTheUnsignedRangeAreRefusedLikeNegativeOnes) {
    for (const double size : {-1.0, 18446744073709551616.0, 1e30}) {
        EXPECT_FALSE(PlaceholderFile::fromJson(
            {{QStringLiteral("name"), QStringLiteral("a")}, {QStringLiteral("size"), size}}))
            << size;
    }
    const std::optional<PlaceholderFile> largest = PlaceholderFile::fromJson(
        {{QStringLiteral("name"), QStringLiteral("a")},
         {QStringLiteral("size"), 18446744073709549568.0}});  // the largest double below 2^64
    ASSERT_TRUE(largest);
    EXPECT_EQ(largest->size, 18446744073709549568ULL);

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("record.json"));
    auto write = [&](const QByteArray& json) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
               file.write(json) == json.size();
    };
    ASSERT_TRUE(write(R"({"identity":"00ff","freeBytes":1e30})"));
    const std::optional<AccountRecord> account = AccountRecord::read(path, nullptr);
    ASSERT_TRUE(account);
    EXPECT_FALSE(account->freeBytes) << "an unknown quota, not a wrapped one";

    ASSERT_TRUE(write(R"({"network":"wifi","throttleBytesPerSecond":1e30})"));
    const ServiceSettings settings = ServiceSettings::read(path);
    EXPECT_EQ(settings.network, ServiceSettings::NetworkWifi);
    EXPECT_EQ(settings.throttleBytesPerSecond, 0u);
}

}  // namespace
}  // namespace vl
