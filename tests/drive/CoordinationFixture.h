#pragma once

#include "drive/coordination/DriveCoordinationBackend.h"
#include "drive/store/DriveStore.h"
#include "platform/cloud/FileCoordinator.h"
#include "platform/cloud/FilePresenter.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/files/ContentTypeRegistry.h"
#include "platform/files/MimeContentTypeRegistry.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <mutex>
#include <string>
#include <vector>

namespace vl::test {

// A presenter that writes down what it hears, where it heard it and on which thread. Its state
// is kept in std::string so that nothing implicitly shared by Qt crosses threads: Qt's own
// reference counting is not visible to ThreadSanitizer.
class RecordingPresenter : public FilePresenter {
public:
    explicit RecordingPresenter(Url url)
        : url_(url.path().toStdString()),
          queue_(Dispatch::serialQueue(QStringLiteral("test.presenter"))) {}

    std::optional<Url> presentedItemURL() const override {
        std::lock_guard lock(mutex_);
        return Url::fromPath(QString::fromStdString(url_));
    }
    DispatchQueuePtr presentedItemOperationQueue() const override { return queue_; }

    void presentedItemDidChange() override { note(QStringLiteral("change")); }
    void presentedItemDidMoveToURL(const Url& newURL) override {
        {
            std::lock_guard lock(mutex_);
            url_ = newURL.path().toStdString();
        }
        note(QStringLiteral("move ") + newURL.path());
    }
    void accommodatePresentedItemDeletionWithCompletionHandler(
        CompletionHandler completionHandler) override {
        note(QStringLiteral("delete"));
        completionHandler(std::nullopt);
    }
    void accommodatePresentedSubitemDeletionAtURLCompletionHandler(
        const Url& url, CompletionHandler completionHandler) override {
        note(QStringLiteral("delete sub ") + url.lastPathComponent());
        completionHandler(std::nullopt);
    }
    void presentedSubitemDidAppearAtURL(const Url& url) override {
        note(QStringLiteral("appear sub ") + url.lastPathComponent());
    }
    void presentedSubitemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) override {
        note(QStringLiteral("move sub ") + oldURL.lastPathComponent() + QStringLiteral(" ") +
             newURL.lastPathComponent());
    }

    // What was heard so far, once the callbacks already queued have run.
    QStringList events() const {
        queue_->sync([] {});
        std::lock_guard lock(mutex_);
        QStringList result;
        for (const std::string& event : events_) {
            result.append(QString::fromStdString(event));
        }
        return result;
    }
    bool allOnOwnQueueOffMainThread() const {
        queue_->sync([] {});
        std::lock_guard lock(mutex_);
        return placesOK_;
    }

private:
    void note(const QString& event) {
        const bool ok = queue_->isCurrent() &&
                        QThread::currentThread() != QCoreApplication::instance()->thread();
        std::lock_guard lock(mutex_);
        events_.push_back(event.toStdString());
        placesOK_ = placesOK_ && ok;
    }

    mutable std::mutex mutex_;
    std::string url_;                  // guarded by mutex_
    std::vector<std::string> events_;  // guarded by mutex_
    bool placesOK_ = true;             // guarded by mutex_
    DispatchQueuePtr queue_;
};

// A drive home in a temporary folder with the coordination backend installed and watching.
class CoordinationFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        ContentTypeRegistry::setShared(std::make_shared<MimeContentTypeRegistry>());
        store_ = std::make_shared<DriveStore>(DriveHome(dir_.path()));
        ASSERT_FALSE(store_->prepare());
        backend_ = std::make_shared<DriveCoordinationBackend>(store_);
        ASSERT_TRUE(backend_->startWatching());
        FileCoordinator::Backend::setShared(backend_);
    }
    void TearDown() override {
        FileCoordinator::Backend::setShared(nullptr);
        backend_->stopWatching();
    }

    QString drivePath(const QString& relative) const {
        return store_->home().driveDir() + QLatin1Char('/') + relative;
    }
    Url driveURL(const QString& relative) const { return Url::fromPath(drivePath(relative)); }

    static QByteArray pattern(qint64 size, char seed) {
        QByteArray bytes(size, Qt::Uninitialized);
        for (qint64 i = 0; i < size; ++i) {
            bytes[i] = char(seed + (i * 31) % 251);
        }
        return bytes;
    }
    static bool writeFile(const QString& path, const QByteArray& bytes) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
    static QByteArray readFile(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // Imports `bytes` as the drive item `relative`, cloud-only or local.
    void importBytes(const QString& relative, const QByteArray& bytes, bool cloudOnly) {
        const QString source =
            sources_.path() + QLatin1Char('/') + Url::fromPath(relative).lastPathComponent();
        ASSERT_TRUE(writeFile(source, bytes));
        ASSERT_FALSE(store_->importItem(source, relative, cloudOnly));
    }

    QTemporaryDir dir_;
    QTemporaryDir sources_;
    std::shared_ptr<DriveStore> store_;
    std::shared_ptr<DriveCoordinationBackend> backend_;
};

}  // namespace vl::test
