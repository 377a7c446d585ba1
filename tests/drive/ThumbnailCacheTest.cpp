#include "drive/service/DriveService.h"
#include "drive/store/AccountRecord.h"
#include "platform/cloud/CloudAccount.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/cloud/KeyValueStore.h"

#include <gtest/gtest.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace vl {
namespace {

// Thumbnails of drive items come from the freedesktop thumbnail cache when it holds one marked
// for the file as it is now; the cache's place and marks are the shared convention, worked out
// here on their own.
class ThumbnailCacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        service_ = DriveService::install(dir_.path() + QStringLiteral("/home"));
        AccountRecord account;
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(service_->store()->writeAccount(account));
        ASSERT_TRUE(CloudDocuments::shared().driveRootURL());
        path_ = CloudDocuments::shared().driveRootURL()->path() + QStringLiteral("/Photo.png");
        QImage photo(64, 32, QImage::Format_RGB32);
        photo.fill(Qt::blue);
        ASSERT_TRUE(photo.save(path_));
    }
    void TearDown() override {
        service_->stopWatching();
        CloudDocuments::setShared(nullptr);
        CloudAccount::setShared(nullptr);
        KeyValueStore::setShared(nullptr);
    }

    static QString cacheFileFor(const QString& path) {
        const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
        return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
               QStringLiteral("/thumbnails/xx-large/") +
               QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) +
               QStringLiteral(".png");
    }
    // Plants a thumbnail of its own colour, marked for the file's URI and the given time.
    void plant(const QColor& colour, qint64 mtime) {
        QImage planted(7, 5, QImage::Format_RGB32);
        planted.fill(colour);
        planted.setText(QStringLiteral("Thumb::URI"),
                        QString::fromUtf8(QUrl::fromLocalFile(path_).toEncoded()));
        planted.setText(QStringLiteral("Thumb::MTime"), QString::number(mtime));
        const QString cached = cacheFileFor(path_);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(cached).path()));
        ASSERT_TRUE(planted.save(cached, "PNG"));
    }
    QImage thumbnail() const {
        Error error;
        const std::optional<ItemAttributes> attributes = CloudDocuments::shared().resourceValues(
            Url::fromPath(path_), ItemAttributeKey::ThumbnailDictionary, &error);
        if (!attributes || !attributes->thumbnailDictionary) {
            return {};
        }
        return attributes->thumbnailDictionary->value(Thumbnail1024x1024SizeKey).value<QImage>();
    }

    QTemporaryDir dir_;
    std::shared_ptr<DriveService> service_;
    QString path_;
};

TEST_F(ThumbnailCacheTest, AMarkedCacheFileIsServedAndAStaleOneReplaced) {
    const qint64 mtime = QFileInfo(path_).lastModified().toSecsSinceEpoch();
    plant(Qt::green, mtime);
    QImage served = thumbnail();
    EXPECT_EQ(served.size(), QSize(7, 5)) << "the planted thumbnail, not one made from the file";
    EXPECT_EQ(served.pixelColor(3, 2), QColor(Qt::green));

    // Marked for another version of the file: made again from the file and stored in its place.
    plant(Qt::green, mtime - 60);
    served = thumbnail();
    EXPECT_EQ(served.size(), QSize(64, 32));
    EXPECT_EQ(served.pixelColor(3, 2), QColor(Qt::blue));
    EXPECT_EQ(QImage(cacheFileFor(path_)).size(), QSize(64, 32));
}

}  // namespace
}  // namespace vl
