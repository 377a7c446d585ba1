#include "app/InstanceChannel.h"
#include "app/LaunchSource.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QThread>

#include <memory>

namespace vl {
namespace {

// Two instances in one process: the running one listens on the main thread, a later start hands
// over from a thread of its own, as it would from its own process.
class InstanceChannelTest : public ::testing::Test {
protected:
    QString folder() const { return dir_.path() + QStringLiteral("/runtime/app"); }

    // Runs `work` on a thread while the main thread serves the running instance.
    template <typename Work>
    static void whileServing(Work work) {
        std::unique_ptr<QThread> thread(QThread::create(work));
        thread->start();
        while (!thread->wait(10)) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
    }

    QTemporaryDir dir_;
};

TEST_F(InstanceChannelTest, ALaterStartHandsItsRequestToTheRunningInstance) {
    InstanceChannel running(folder());
    ASSERT_EQ(running.claim(), InstanceChannel::Role::Primary);
    EXPECT_EQ(QFile::permissions(folder()) & 0x0077, 0) << "others may enter the folder";
    QList<LaunchRequest> received;
    ASSERT_FALSE(running.listen([&received](const LaunchRequest& request) {
        received.append(request);
        return request.url() != QStringLiteral("velloraapp:///refused");
    }));

    InstanceChannel later(folder());
    ASSERT_EQ(later.claim(), InstanceChannel::Role::Secondary);
    const LaunchRequest first(QStringLiteral("velloraapp:///a%20b?mode=info"),
                              LaunchSource::HomeShell);
    const LaunchRequest second(QStringLiteral("velloraapp:///refused"), std::nullopt);
    InstanceChannel::HandOff answers[2] = {};
    whileServing([&] {
        answers[0] = later.handOver(first, 10'000);
        answers[1] = later.handOver(second, 10'000);
    });
    EXPECT_EQ(answers[0], InstanceChannel::HandOff::Accepted);
    EXPECT_EQ(answers[1], InstanceChannel::HandOff::Refused);
    EXPECT_EQ(received, (QList<LaunchRequest>{first, second}));
}

TEST_F(InstanceChannelTest, WhenTheRunningInstanceGoesTheLaterStartTakesItsPlace) {
    auto running = std::make_unique<InstanceChannel>(folder());
    ASSERT_EQ(running->claim(), InstanceChannel::Role::Primary);
    InstanceChannel later(folder());
    ASSERT_EQ(later.claim(), InstanceChannel::Role::Secondary);

    // Still starting (not listening): the later start waits, then gives up with a reason.
    QString problem;
    EXPECT_EQ(later.handOver(LaunchRequest(), 150, &problem), InstanceChannel::HandOff::Failed);
    EXPECT_TRUE(problem.contains(QStringLiteral("not listening"))) << problem.toStdString();

    running.reset();
    EXPECT_EQ(later.handOver(LaunchRequest(), 10'000), InstanceChannel::HandOff::BecamePrimary);
    EXPECT_EQ(later.role(), InstanceChannel::Role::Primary);
    EXPECT_FALSE(later.listen([](const LaunchRequest&) { return true; }));
}

TEST_F(InstanceChannelTest, WhatIsNotARequestIsDroppedAndTheNextOneIsHeard) {
    InstanceChannel running(folder());
    ASSERT_EQ(running.claim(), InstanceChannel::Role::Primary);
    int received = 0;
    ASSERT_FALSE(running.listen([&received](const LaunchRequest&) { return ++received > 0; }));

    QByteArray answers[2];
    const auto send = [this](const QByteArray& bytes) {
        QLocalSocket socket;
        socket.connectToServer(folder() + QStringLiteral("/instance.socket"));
        if (!socket.waitForConnected(5000)) {
            return QByteArray("no connection");
        }
        socket.write(bytes);
        socket.waitForBytesWritten(5000);
        socket.waitForReadyRead(5000);
        return socket.readAll();
    };
    InstanceChannel::HandOff after{};
    whileServing([&] {
        answers[0] = send(QByteArray("\xff\xff\xff\xff", 4) + "{}");  // far too long
        answers[1] = send(QByteArray("\0\0\0\x05", 4) + "[1,2]");     // not a request
        after = InstanceChannel(folder()).handOver(LaunchRequest(), 10'000);
    });
    EXPECT_TRUE(answers[0].isEmpty());
    EXPECT_TRUE(answers[1].isEmpty());
    EXPECT_EQ(after, InstanceChannel::HandOff::Accepted);
    EXPECT_EQ(received, 1);
}

TEST(LaunchRequestTest, TheSenderIsNamedOnlyBeforeTheURL) {
    const QString url = QStringLiteral("velloraapp:///x");
    const QString homeShell = LaunchSource::ArgumentPrefix + LaunchSource::HomeShell;
    EXPECT_EQ(LaunchRequest::fromArguments({homeShell, url}),
              LaunchRequest(url, LaunchSource::HomeShell));
    EXPECT_EQ(LaunchRequest::fromArguments({url, homeShell}), LaunchRequest(url, std::nullopt));
    EXPECT_EQ(LaunchRequest::fromArguments({url}), LaunchRequest(url, std::nullopt));
    EXPECT_EQ(LaunchRequest::fromArguments({LaunchSource::ArgumentPrefix, url}),
              LaunchRequest(url, std::nullopt));
    EXPECT_EQ(LaunchRequest::fromArguments({homeShell}),
              LaunchRequest(std::nullopt, LaunchSource::HomeShell));
    EXPECT_EQ(LaunchRequest::fromArguments({}), LaunchRequest());

    // What goes over the socket comes back the same; anything else is no request.
    for (const LaunchRequest& request : {LaunchRequest(url, LaunchSource::Drillbot),
                                         LaunchRequest(url, std::nullopt), LaunchRequest()}) {
        EXPECT_EQ(LaunchRequest::fromMessage(request.message()), request);
    }
    EXPECT_EQ(LaunchRequest::fromMessage("{\"url\":\"x\",\"sourceApplication\":\"\"}"),
              LaunchRequest(QStringLiteral("x"), std::nullopt));
    EXPECT_FALSE(LaunchRequest::fromMessage("[\"x\"]"));
    EXPECT_FALSE(LaunchRequest::fromMessage("{\"url\":"));
    EXPECT_EQ(LaunchRequest(url, LaunchSource::Drillbot).options(),
              (QVariantMap{{LaunchSource::OptionKey, LaunchSource::Drillbot}}));
    EXPECT_TRUE(LaunchRequest(url, std::nullopt).options().isEmpty());
}

}  // namespace
}  // namespace vl
