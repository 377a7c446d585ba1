#include "platform/log/SystemLogService.h"

#include "platform/log/JournalMirror.h"
#include "platform/log/LogRateQuota.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <thread>
#include <vector>

namespace vl {
namespace {

namespace sls = SystemLogService;

class SystemLogServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        sls::setLogFilePath(dir_.filePath(QStringLiteral("logs/system.log")));
        qputenv("SLS_QUOTA_DISABLED", "1");
        client_ = sls::open(nullptr, "com.tessaly.VelloraApp", 0);
        sls::setFilter(client_, sls::filterUpTo(7));
    }
    void TearDown() override {
        sls::close(client_);
        qunsetenv("SLS_QUOTA_DISABLED");
        sls::setLogFilePath(QString());
    }

    void send(std::initializer_list<std::pair<const char*, QString>> fields,
              sls::Client client = nullptr) {
        sls::Message message = sls::newMessage();
        for (const auto& [key, value] : fields) {
            sls::setValue(message, key, value);
        }
        sls::send(client ? client : client_, message);
        sls::release(message);
    }
    QList<QByteArray> lines() const {
        QFile file(sls::logFilePath());
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        QList<QByteArray> result = file.readAll().split('\n');
        if (!result.isEmpty() && result.last().isEmpty()) {
            result.removeLast();
        }
        return result;
    }
    QStringList levels() const {
        QStringList result;
        for (const QByteArray& line : lines()) {
            result
                << QJsonDocument::fromJson(line).object().value(QStringLiteral("Level")).toString();
        }
        return result;
    }

    QTemporaryDir dir_;
    sls::Client client_ = nullptr;
};

TEST_F(SystemLogServiceTest, RecordIsOneJsonLineWithKeysInTheOrderFirstSet) {
    sls::Message message = sls::newMessage();
    sls::setValue(message, "Time", QStringLiteral("1700000000"));
    sls::setValue(message, "Level", QStringLiteral("3"));
    sls::setValue(message, "Message", QStringLiteral("first"));
    sls::setValue(message, "Time", QStringLiteral("1700000001"));  // replaced in place
    sls::send(client_, message);
    sls::release(message);

    ASSERT_EQ(lines(), QList<QByteArray>{R"({"Time":"1700000001","Level":"3","Message":"first"})"});
}

TEST_F(SystemLogServiceTest, StringsAreEscapedAndUnicodeIsWrittenAsUtf8) {
    const QString text = QStringLiteral("say \"hi\"\\ tab\tline\nbell\x07 é ✓ ") +
                         QString::fromUtf8("\xF0\x9F\x98\x80");
    send({{"Message", text}, {"Odd \"key\"", QStringLiteral("")}});

    const QList<QByteArray> written = lines();
    ASSERT_EQ(written.size(), 1);
    EXPECT_EQ(written[0], QByteArray(R"({"Message":"say \"hi\"\\ tab\tline\nbell\u0007 )") +
                              "\xC3\xA9 \xE2\x9C\x93 \xF0\x9F\x98\x80" + R"(","Odd \"key\"":""})");
    const QJsonObject parsed = QJsonDocument::fromJson(written[0]).object();
    EXPECT_EQ(parsed.value(QStringLiteral("Message")).toString(), text);
}

TEST_F(SystemLogServiceTest, FilterDropsDigitLevelsOutsideTheMaskOnly) {
    sls::Client client = sls::open(nullptr, "filtered", 0);
    EXPECT_EQ(sls::filter(client), sls::filterUpTo(5));  // the default of a new client
    sls::setFilter(client, sls::filterUpTo(3));
    for (const char* level : {"0", "3", "4", "7", "9", "10", "x"}) {
        send({{"Level", QString::fromLatin1(level)}}, client);
    }
    send({{"Message", QStringLiteral("no level")}}, client);
    sls::close(client);

    EXPECT_EQ(levels(), (QStringList{"0", "3", "9", "10", "x", ""}));
}

TEST_F(SystemLogServiceTest, NullHandlesAreTolerated) {
    sls::setValue(nullptr, "Level", QStringLiteral("3"));
    sls::send(client_, nullptr);
    sls::release(nullptr);
    sls::close(nullptr);

    // A null client stands for the process's default client.
    const uint32_t defaultFilter = sls::filter(nullptr);
    sls::setFilter(nullptr, sls::filterUpTo(2));
    send({{"Level", QStringLiteral("2")}}, nullptr);
    sls::Message message = sls::newMessage();
    sls::setValue(message, "Level", QStringLiteral("5"));
    sls::send(nullptr, message);
    sls::release(message);
    sls::setFilter(nullptr, defaultFilter);

    EXPECT_EQ(levels(), QStringList{"2"});
}

TEST_F(SystemLogServiceTest, QuotaDropsABurstAndEveryDropIsReported) {
    qunsetenv("SLS_QUOTA_DISABLED");
    constexpr int kSent = 3000;
    for (int i = 0; i < kSent; ++i) {
        send({{"Level", QStringLiteral("6")}, {"Message", QString::number(i)}});
    }
    // Lifting the quota lets the count of the last drops out before this record.
    qputenv("SLS_QUOTA_DISABLED", "1");
    send({{"Level", QStringLiteral("6")}, {"Message", QStringLiteral("after")}});

    const QRegularExpression noticeText(
        QStringLiteral("^(\\d+) records dropped by the rate quota$"));
    int written = 0;
    int reportedDrops = 0;
    int notices = 0;
    QString last;
    for (const QByteArray& line : lines()) {
        const QJsonObject record = QJsonDocument::fromJson(line).object();
        last = record.value(QStringLiteral("Message")).toString();
        const QRegularExpressionMatch notice = noticeText.match(last);
        if (notice.hasMatch()) {
            ++notices;
            reportedDrops += notice.captured(1).toInt();
            EXPECT_EQ(record.value(QStringLiteral("Facility")).toString().toStdString(),
                      "com.tessaly.VelloraApp");
        } else if (last != QLatin1String("after")) {
            ++written;
        }
    }
    EXPECT_LT(written, kSent);
    EXPECT_GE(notices, 1);
    EXPECT_EQ(written + reportedDrops, kSent);
    EXPECT_EQ(last.toStdString(), "after");
}

TEST_F(SystemLogServiceTest, LinesOfConcurrentSendersNeverInterleave) {
    constexpr int kThreads = 6;
    constexpr int kPerThread = 300;
    const QString filler(5000, QLatin1Char('x'));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            sls::Client client = sls::open("worker", "com.tessaly.VelloraApp", 0);
            for (int i = 0; i < kPerThread; ++i) {
                sls::Message message = sls::newMessage();
                sls::setValue(message, "Thread", QString::number(t));
                sls::setValue(message, "Message", filler);
                sls::send(client, message);
                sls::release(message);
            }
            sls::close(client);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    const QList<QByteArray> all = lines();
    ASSERT_EQ(all.size(), kThreads * kPerThread);
    for (const QByteArray& line : all) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        ASSERT_EQ(object.value(QStringLiteral("Message")).toString(), filler);
    }
}

// A log rotated by renaming: LogFileWriterTest, on the writer's own clock.
TEST_F(SystemLogServiceTest, LinesFollowTheFileWhenItIsRemovedOrMoved) {
    send({{"Level", QStringLiteral("3")}, {"Message", QStringLiteral("one")}});
    ASSERT_TRUE(QFile::remove(sls::logFilePath()));
    send({{"Level", QStringLiteral("3")}, {"Message", QStringLiteral("two")}});
    ASSERT_EQ(lines().size(), 1);  // a new file, at once
    EXPECT_TRUE(lines().first().contains("two"));

    sls::setLogFilePath(dir_.filePath(QStringLiteral("elsewhere.log")));
    send({{"Level", QStringLiteral("3")}, {"Message", QStringLiteral("four")}});
    EXPECT_EQ(lines().size(), 1);
    EXPECT_TRUE(lines().first().contains("four"));
}

TEST(SystemLogPaths, DefaultLogFileIsInTheStateDirectory) {
    sls::setLogFilePath(QString());
    EXPECT_EQ(sls::logFilePath(), qEnvironmentVariable("XDG_STATE_HOME") +
                                      QStringLiteral("/com.tessaly.VelloraApp/system.log"));
}

TEST(LogRateQuotaTest, AdmitsTheBurstThenRefillsAtTheRate) {
    LogRateQuota quota(10, 3);  // 10 a second, burst 3
    const auto t0 = LogRateQuota::Clock::time_point() + std::chrono::hours(1);
    using std::chrono::milliseconds;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(quota.admit(t0));
    }
    EXPECT_FALSE(quota.admit(t0));
    EXPECT_FALSE(quota.admit(t0 + milliseconds(50)));  // half a token
    EXPECT_TRUE(quota.admit(t0 + milliseconds(100)));
    EXPECT_EQ(quota.takeDropped(), 2u);
    EXPECT_EQ(quota.takeDropped(), 0u);

    // A long pause refills to the burst, not beyond it.
    const auto later = t0 + std::chrono::seconds(60);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(quota.admit(later));
    }
    EXPECT_FALSE(quota.admit(later));
}

TEST(JournalMirrorTest, KeysBecomeUpperCaseFieldsWithThePrefix) {
    EXPECT_EQ(JournalMirror::fieldName(QStringLiteral("TimeNanoSec")), "VL_TIMENANOSEC");
    EXPECT_EQ(JournalMirror::fieldName(QStringLiteral("a-b.c")), "VL_A_B_C");
    EXPECT_EQ(JournalMirror::fieldName(QString(100, QLatin1Char('k'))).size(), 64);
}

}  // namespace
}  // namespace vl
