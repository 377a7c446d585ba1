#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "platform/app/NotificationCenter.h"
#include "platform/app/Preferences.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/log/SystemLogService.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

using namespace vl;

namespace {

QTemporaryDir& scratch() {
    static QTemporaryDir dir;
    return dir;
}

QString logPath() {
    return scratch().filePath(QStringLiteral("system.log"));
}

QString markerPath() {
    return scratch().filePath(QStringLiteral("vl_hella_logging"));
}

// The shared client reads its level when it is created, so the marker file and the log file are
// redirected before any test logs.
class LoggingEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        VLSLSClient::setMarkerFilePath(markerPath());
        SystemLogService::setLogFilePath(logPath());
        ::unsetenv("SLS_QUOTA_DISABLED");
    }
};
const auto* const environment = ::testing::AddGlobalTestEnvironment(new LoggingEnvironment);

// Counts how often the formatter asked for its description.
struct CountingObject {
    std::atomic<int>* calls;
    QString description() const {
        ++*calls;
        return QStringLiteral("counted");
    }
};

class VLLoggingTest : public ::testing::Test {
protected:
    void SetUp() override {
        QFile::remove(markerPath());
        setPreference(QVariant());
        VLSLSClient::SLSClient()->flush();
        QFile::remove(logPath());
    }

    static void setPreference(const QVariant& value) {
        if (value.isValid()) {
            Preferences::standard().setValue(QStringLiteral("VLLogLevel"), value);
        } else {
            Preferences::standard().remove(QStringLiteral("VLLogLevel"));
        }
        Preferences::standard().synchronize();
        NotificationCenter::defaultCenter().post(Notifications::ManagedPreferencesDidChange);
        VLSLSClient::SLSClient()->flush();
    }

    static std::vector<QJsonObject> records() {
        VLSLSClient::SLSClient()->flush();
        std::vector<QJsonObject> result;
        QFile file(logPath());
        if (!file.open(QIODevice::ReadOnly)) {
            return result;
        }
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (!line.isEmpty()) {
                result.push_back(QJsonDocument::fromJson(line).object());
            }
        }
        return result;
    }

    static std::vector<QJsonObject> recordsWithMessage(const QString& message) {
        std::vector<QJsonObject> matching;
        for (const QJsonObject& record : records()) {
            if (record.value(QStringLiteral("Message")).toString() == message) {
                matching.push_back(record);
            }
        }
        return matching;
    }
};

TEST_F(VLLoggingTest, DefaultLevelIsInfoAndSkipsDebugFormatting) {
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 6);
    EXPECT_EQ(qgetenv("SLS_QUOTA_DISABLED"), QByteArray());

    std::atomic<int> calls{0};
    VLLOG(7, "debug %@", CountingObject{&calls});
    VLLOG(6, "info %@", CountingObject{&calls});
    EXPECT_EQ(calls.load(), 1);

    EXPECT_TRUE(recordsWithMessage(QStringLiteral("debug counted")).empty());
    const auto info = recordsWithMessage(QStringLiteral("info counted"));
    ASSERT_EQ(info.size(), 1u);
    const QJsonObject& record = info.front();
    EXPECT_EQ(record.value(QStringLiteral("Level")).toString(), QStringLiteral("6"));
    EXPECT_EQ(record.value(QStringLiteral("VLLogToFile")).toString(), QStringLiteral("1"));
    EXPECT_EQ(record.value(QStringLiteral("Facility")).toString(),
              QStringLiteral("com.tessaly.VelloraApp"));
    EXPECT_EQ(record.value(QStringLiteral("VLFacility")).toString(), QStringLiteral("VL"));
    EXPECT_EQ(record.value(QStringLiteral("Source")).toString(),
              QStringLiteral("VLLoggingTest.cpp"));
    EXPECT_EQ(record.value(QStringLiteral("PID")).toString(),
              QString::number(QCoreApplication::applicationPid()));
    EXPECT_GT(record.value(QStringLiteral("Line")).toString().toUInt(), 0u);
    EXPECT_FALSE(record.value(QStringLiteral("Host")).toString().isEmpty());
    EXPECT_GT(record.value(QStringLiteral("Time")).toString().toULongLong(), 1600000000ull);
}

TEST_F(VLLoggingTest, PreferenceChoosesTheLevelWithoutARestart) {
    setPreference(2);
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 6);

    setPreference(3);
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 3);
    EXPECT_EQ(SystemLogService::filter(VLSLSClient::SLSClient()->slsClient()),
              SystemLogService::filterUpTo(3));
    VLLOG(4, "dropped warning");
    VLLOG(3, "kept error");
    EXPECT_TRUE(recordsWithMessage(QStringLiteral("dropped warning")).empty());
    const auto errors = recordsWithMessage(QStringLiteral("kept error"));
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_FALSE(errors.front().contains(QStringLiteral("VLLogToFile")));
}

TEST_F(VLLoggingTest, HighPreferenceLiftsTheQuotaAndSaysSo) {
    setPreference(12);
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 12);
    EXPECT_EQ(VLGetSLSLogLevel(), 7);
    EXPECT_EQ(qgetenv("SLS_QUOTA_DISABLED"), QByteArray("1"));

    // The line is posted from a global queue; give it a bounded time to arrive.
    std::vector<QJsonObject> lines;
    for (int attempt = 0; attempt < 200 && lines.empty(); ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        lines = recordsWithMessage(QStringLiteral("Unthrottling logging"));
    }
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().value(QStringLiteral("Level")).toString(), QStringLiteral("7"));

    setPreference(QVariant());
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 6);
    EXPECT_EQ(qgetenv("SLS_QUOTA_DISABLED"), QByteArray());
}

TEST_F(VLLoggingTest, MarkerFileForcesTheMaximumLevel) {
    QFile marker(markerPath());
    ASSERT_TRUE(marker.open(QIODevice::WriteOnly));
    marker.close();
    setPreference(3);
    EXPECT_EQ(VLSLSClient::SLSClient()->logLevel(), 8);
    EXPECT_EQ(qgetenv("SLS_QUOTA_DISABLED"), QByteArray("1"));

    // Levels outside 0..7 that pass the level test are sent as "9".
    VLLOG(8, "beyond debug");
    VLLOG(-1, "below emergency");
    for (const QString& message :
         {QStringLiteral("beyond debug"), QStringLiteral("below emergency")}) {
        const auto matching = recordsWithMessage(message);
        ASSERT_EQ(matching.size(), 1u) << message.toStdString();
        EXPECT_EQ(matching.front().value(QStringLiteral("Level")).toString(), QStringLiteral("9"));
    }
    QFile::remove(markerPath());
    setPreference(QVariant());
}

TEST_F(VLLoggingTest, RecordKeysFollowTheCallersDetails) {
    VLLog("dir/Widget.cpp", "-[Widget show]", 0, QStringLiteral("VL"), 3, "no line");
    const auto noLine = recordsWithMessage(QStringLiteral("no line"));
    ASSERT_EQ(noLine.size(), 1u);
    EXPECT_FALSE(noLine.front().contains(QStringLiteral("Line")));
    EXPECT_EQ(noLine.front().value(QStringLiteral("Source")).toString(),
              QStringLiteral("Widget.cpp"));
    EXPECT_EQ(noLine.front().value(QStringLiteral("Function")).toString(),
              QStringLiteral("-[Widget show]"));

    auto queue = Dispatch::realDispatcher()->createSerialQueue(QStringLiteral("com.tessaly.test.q"),
                                                               QualityOfService::Default, 0);
    queue->sync([] { VLLOG(3, "from a queue"); });
    const auto fromQueue = recordsWithMessage(QStringLiteral("from a queue"));
    ASSERT_EQ(fromQueue.size(), 1u);
    EXPECT_EQ(fromQueue.front().value(QStringLiteral("Thread")).toString(),
              QStringLiteral("com.tessaly.test.q"));
}

TEST_F(VLLoggingTest, RecordsKeepSubmissionOrderPerThread) {
    // Unthrottled, so that no record is dropped by the service's quota however often this runs.
    setPreference(8);
    constexpr int Threads = 4;
    constexpr int PerThread = 100;
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < PerThread; ++i) {
                VLLOG(3, "order %d %d", t, i);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::vector<int> next(Threads, 0);
    int seen = 0;
    for (const QJsonObject& record : records()) {
        const QStringList words = record.value(QStringLiteral("Message")).toString().split(' ');
        if (words.size() != 3 || words[0] != QStringLiteral("order")) {
            continue;
        }
        const int t = words[1].toInt();
        EXPECT_EQ(words[2].toInt(), next[t]) << "thread " << t;
        next[t] = words[2].toInt() + 1;
        ++seen;
    }
    EXPECT_EQ(seen, Threads * PerThread);
}

TEST_F(VLLoggingTest, ARecordKeepsTheTimeItWasLoggedWhileTheLogQueueIsBusy) {
    // The log queue is held until the clock has moved well past the call: a record stamped when
    // its batch is built would carry the later time.
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    VLSLSClient::SLSClient()->performLoggingBlock([released] { released.wait(); });
    const auto microseconds = [] {
        return std::chrono::duration_cast<std::chrono::microseconds>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    };
    const qint64 before = microseconds();
    VLLOG(3, "stamped at the call");
    const qint64 after = microseconds();
    while (microseconds() < after + 20000) {
    }
    release.set_value();
    const auto stamped = recordsWithMessage(QStringLiteral("stamped at the call"));
    ASSERT_EQ(stamped.size(), 1u);
    const qint64 time =
        stamped.front().value(QStringLiteral("Time")).toString().toLongLong() * 1000000 +
        stamped.front().value(QStringLiteral("TimeNanoSec")).toString().toLongLong() / 1000;
    EXPECT_GE(time, before);
    EXPECT_LE(time, after);
}

TEST_F(VLLoggingTest, GatheredRecordsReachTheLogSoonWithoutAFlush) {
    VLLOG(3, "unflushed line");
    QElapsedTimer timer;
    timer.start();
    QByteArray content;
    while (!content.contains("unflushed line") && timer.elapsed() < 2000) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        QFile file(logPath());
        if (file.open(QIODevice::ReadOnly)) {
            content = file.readAll();
        }
    }
    EXPECT_TRUE(content.contains("unflushed line"));
}

TEST_F(VLLoggingTest, SelfTestLogsEverySeverityInOrder) {
    setPreference(7);
    _VelloraLogTest();
    QStringList messages;
    for (const QJsonObject& record : records()) {
        if (record.value(QStringLiteral("Function")).toString() ==
            QStringLiteral("_VelloraLogTest")) {
            messages << record.value(QStringLiteral("Message")).toString();
        }
    }
    EXPECT_EQ(messages, QStringList({"LOG_DEBUG", "LOG_INFO", "LOG_WARNING", "LOG_ERR", "LOG_CRIT",
                                     "LOG_ALERT"}));
    setPreference(QVariant());
}

}  // namespace

TEST(BracketedFunctionName, NamesMembersStaticsFreeFunctionsAndLambdas) {
    using vl::logging::bracketedFunctionName;
    EXPECT_EQ(bracketedFunctionName("void vl::NavController::setupInitialViewController()"),
              QStringLiteral("-[NavController setupInitialViewController]"));
    EXPECT_EQ(bracketedFunctionName("static bool vl::Settings::gridMode()"),
              QStringLiteral("+[Settings gridMode]"));
    EXPECT_EQ(bracketedFunctionName("int main(int, char**)"), QStringLiteral("main"));
    EXPECT_EQ(bracketedFunctionName("vl::format(const char*)"), QStringLiteral("format"));
    EXPECT_EQ(bracketedFunctionName("vl::QuotaFetcher::runWithInterval(double)::<lambda()>"),
              QStringLiteral("-[QuotaFetcher runWithInterval]"));
    EXPECT_EQ(bracketedFunctionName("std::vector<int> vl::FileUtils::list(const QString&) const"),
              QStringLiteral("-[FileUtils list]"));
    EXPECT_EQ(bracketedFunctionName("void vl::Box<T>::put(T) [with T = std::pair<int, int>]"),
              QStringLiteral("-[Box put]"));
}
