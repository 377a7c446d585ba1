#include "platform/cloud/ItemProgress.h"

#include <gtest/gtest.h>

#include <thread>

namespace vl {
namespace {

std::shared_ptr<ItemProgress> fileProgress(const QString& path, qint64 total) {
    auto progress = ItemProgress::create(total);
    progress->setKind(ItemProgress::FileKind);
    progress->setFileURL(Url::fromPath(path));
    return progress;
}

TEST(ItemProgressTest, FractionFollowsCountsAndObserversHearEachChangeUntilRemoved) {
    auto progress = fileProgress(QStringLiteral("/drive/a.pdf"), 0);
    EXPECT_EQ(progress->fractionCompleted(), 0.0);
    progress->setTotalUnitCount(200);
    std::vector<double> heard;
    const auto id = progress->addFractionCompletedObserver(
        [&](ItemProgress& p) { heard.push_back(p.fractionCompleted()); });
    progress->setCompletedUnitCount(50);
    progress->setCompletedUnitCount(50);  // no change, nothing to hear
    progress->setCompletedUnitCount(200);
    progress->removeFractionCompletedObserver(id);
    progress->setCompletedUnitCount(100);
    EXPECT_EQ(heard, (std::vector<double>{0.25, 1.0}));
    EXPECT_DOUBLE_EQ(progress->fractionCompleted(), 0.5);
}

TEST(ItemProgressTest, SubscribersHearPublicationsOfTheirItemAndItsContentsOnly) {
    auto inside = fileProgress(QStringLiteral("/drive/Folder/b.txt"), 10);
    inside->publish();  // before the subscription: told at once
    QStringList events;
    const auto token = ItemProgress::addSubscriberForFileURL(
        Url::fromPath(QStringLiteral("/drive/Folder")),
        [&](const std::shared_ptr<ItemProgress>& p) -> ItemProgress::UnpublishingHandler {
            const QString name = p->fileURL()->lastPathComponent();
            events.append(QStringLiteral("publish ") + name);
            return [&events, name] { events.append(QStringLiteral("unpublish ") + name); };
        });
    auto elsewhere = fileProgress(QStringLiteral("/drive/FolderB/c.txt"), 10);
    elsewhere->publish();
    auto later = fileProgress(QStringLiteral("/drive/Folder/d.txt"), 10);
    later->publish();
    later->publish();
    later->unpublish();
    inside->unpublish();
    elsewhere->unpublish();
    ItemProgress::removeSubscriber(token);
    EXPECT_EQ(events, (QStringList{"publish b.txt", "publish d.txt", "unpublish d.txt",
                                   "unpublish b.txt"}));
}

TEST(ItemProgressTest, RemovingASubscriptionRunsItsPendingUnpublishingHandlersOnce) {
    auto progress = fileProgress(QStringLiteral("/drive/e.mov"), 10);
    progress->publish();
    int unpublished = 0;
    ItemProgress::SubscriptionToken token;
    // The handler removes its own subscription, as a screen does when its progress ends.
    token = ItemProgress::addSubscriberForFileURL(
        Url::fromPath(QStringLiteral("/drive/e.mov")),
        [&](const std::shared_ptr<ItemProgress>&) -> ItemProgress::UnpublishingHandler {
            return [&] {
                ++unpublished;
                ItemProgress::removeSubscriber(token);
            };
        });
    ItemProgress::removeSubscriber(token);
    progress->unpublish();
    EXPECT_EQ(unpublished, 1);
}

TEST(ItemProgressTest, ObserversAndSubscriptionsMayComeAndGoWhileAnotherThreadPublishes) {
    const Url url = Url::fromPath(QStringLiteral("/drive/f.bin"));
    std::atomic<bool> stop{false};
    std::thread publisher([&] {
        while (!stop) {
            auto progress = fileProgress(url.path(), 100);
            progress->publish();
            for (int i = 1; i <= 100; ++i) {
                progress->setCompletedUnitCount(i);
            }
            progress->unpublish();
        }
    });
    // Once the subscription is removed its unpublishing handler has removed the observer, and
    // no call of that observer is still running or yet to come.
    std::atomic<int> lateCalls{0};
    for (int i = 0; i < 200; ++i) {
        auto removed = std::make_shared<std::atomic<bool>>(false);
        const auto token = ItemProgress::addSubscriberForFileURL(
            url,
            [&,
             removed](const std::shared_ptr<ItemProgress>& p) -> ItemProgress::UnpublishingHandler {
                const auto id = p->addFractionCompletedObserver([&, removed](ItemProgress&) {
                    if (removed->load()) {
                        ++lateCalls;
                    }
                });
                return [p, id] { p->removeFractionCompletedObserver(id); };
            });
        std::this_thread::yield();
        ItemProgress::removeSubscriber(token);
        removed->store(true);
    }
    stop = true;
    publisher.join();
    EXPECT_EQ(lateCalls.load(), 0);
}

}  // namespace
}  // namespace vl
