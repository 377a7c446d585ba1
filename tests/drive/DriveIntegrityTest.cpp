#include "StoreFixture.h"
#include "drive/integrity/ItemTree.h"
#include "drive/store/DriveStore.h"
#include "drive/store/RecordFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vl {
namespace {

void writeNative(const QByteArray& path, const QByteArray& bytes) {
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0) << path.constData();
    ASSERT_EQ(::write(fd, bytes.constData(), size_t(bytes.size())), bytes.size());
    ::close(fd);
}

// Gives `path` the modification time of `like`, to the second or to the nanosecond.
void copyModificationTime(const QString& like, const QString& path) {
    struct stat st;
    ASSERT_EQ(::stat(like.toUtf8().constData(), &st), 0);
    struct timespec times[2] = {st.st_atim, st.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.toUtf8().constData(), times, 0), 0);
}

class DriveIntegrityTest : public StoreFixture {
protected:
    // An app library whose record declares folders named *.manuscript to be documents.
    void declarePackages() {
        const QJsonObject type{
            {QStringLiteral("name"), QStringLiteral("Manuscript")},
            {QStringLiteral("contentTypes"),
             QJsonArray{QStringLiteral("application/x-example-manuscript")}},
            {QStringLiteral("package"), true},
            {QStringLiteral("extensions"), QJsonArray{QStringLiteral("manuscript")}}};
        const QJsonObject record{
            {QStringLiteral("identifier"), QStringLiteral("com.example.Writer")},
            {QStringLiteral("localizedName"), QStringLiteral("Writer")},
            {QStringLiteral("folder"), QStringLiteral("Writer")},
            {QStringLiteral("documentTypes"), QJsonArray{type}}};
        ASSERT_FALSE(RecordFile::writeObject(
            store_->home().containerRecordFile(QStringLiteral("com.example.Writer")), record));
        ASSERT_TRUE(QDir().mkpath(drive(QStringLiteral("Writer"))));
    }

    // Downloads a cloud-only item the way the downloader does, minus the threads.
    void download(const Url& url) {
        const std::optional<QString> cloud = store_->cloudContentPath(url, nullptr);
        ASSERT_TRUE(cloud);
        const QString copy = store_->home().stagingDir() + QStringLiteral("/copy");
        ASSERT_FALSE(ItemTree::copy(cloud->toUtf8(), copy.toUtf8()));
        ASSERT_FALSE(store_->completeDownload(url, copy, ItemTree::signature(cloud->toUtf8())));
    }
};

TEST_F(DriveIntegrityTest, EvictionComparesContentNotSizeAndTime) {
    const Url notes = import(QStringLiteral("notes.txt"), "first draft", false);
    // Same length, same modification time to the nanosecond: only the bytes differ.
    writeFile(notes.path(), "other words");
    copyModificationTime(cloud(QStringLiteral("notes.txt")), notes.path());

    ASSERT_FALSE(store_->evict(notes));
    EXPECT_TRUE(store_->isCloudOnly(notes));
    EXPECT_EQ(readAll(cloud(QStringLiteral("notes.txt"))), QByteArray("other words"));
    download(notes);
    EXPECT_EQ(readAll(notes.path()), QByteArray("other words"));
}

TEST_F(DriveIntegrityTest, LongTagsSurviveEvictionAndDownload) {
    const Url url = import(QStringLiteral("Tagged.txt"), "x", false);
    QStringList tags;
    for (int i = 0; i < 300; ++i) {
        tags.append(QStringLiteral("tag number %1").arg(i));
    }
    ASSERT_FALSE(store_->setTags(url, tags));
    EXPECT_EQ(store_->tags(url), tags);
    ASSERT_FALSE(store_->evict(url));
    EXPECT_EQ(store_->tags(url), tags);
    download(url);
    EXPECT_EQ(store_->tags(url), tags);
}

TEST_F(DriveIntegrityTest, APackageIsEvictedExactlyWithEveryNameInIt) {
    declarePackages();
    const QString package = drive(QStringLiteral("Writer/Novel.manuscript"));
    ASSERT_TRUE(QDir().mkpath(package + QStringLiteral("/chapters")));
    const QByteArray native = package.toUtf8();
    writeNative(native + "/.vltmp-autosave", "autosave");
    writeNative(native + "/.layer.vlcloud", "not a placeholder");
    writeNative(native + "/.text.vldownload", "a user's file");
    writeNative(native + "/chapters/caf\xe9.txt", "latin-1 name");
    writeNative(native + "/chapters/one.txt", "one");
    ASSERT_EQ(::symlink("chapters/one.txt", (native + "/first").constData()), 0);
    const Url url = store_->driveURL(QStringLiteral("Writer/Novel.manuscript"), true);
    ASSERT_FALSE(store_->mirrorLocalChange(url));

    // A file deleted inside the package stays deleted in the cloud, and is no cloud-only item of
    // its own to the recovery pass.
    ASSERT_EQ(::unlink((native + "/chapters/one.txt").constData()), 0);
    EXPECT_EQ(store_->recover(), 0);
    const QString reference = dir_.path() + QStringLiteral("/reference");
    ASSERT_FALSE(ItemTree::copy(native, reference.toUtf8()));

    ASSERT_FALSE(store_->evict(url));
    EXPECT_TRUE(store_->isCloudOnly(url));
    EXPECT_TRUE(ItemTree::sameContent(reference.toUtf8(),
                                      cloud(QStringLiteral("Writer/Novel.manuscript")).toUtf8()));
    download(url);
    EXPECT_TRUE(ItemTree::sameContent(reference.toUtf8(), native));
    struct stat st;
    ASSERT_EQ(::lstat((native + "/first").constData(), &st), 0);
    EXPECT_TRUE(S_ISLNK(st.st_mode)) << "a link comes back as a link";
}

TEST_F(DriveIntegrityTest, UserNamesThatLookLikeTheServicesAreLeftAlone) {
    // Names the service once used for its own files are a user's like any other.
    const Url notes = import(QStringLiteral("notes"), "notes", false);
    writeFile(drive(QStringLiteral(".notes.vldownload/inside.txt")), "kept");
    writeFile(drive(QStringLiteral(".vltmp-report.txt")), "kept too");
    const Url report = import(QStringLiteral("report.txt"), "report", false);
    ASSERT_FALSE(store_->evict(notes));
    download(notes);
    ASSERT_FALSE(store_->evict(report));
    download(report);
    EXPECT_EQ(readAll(drive(QStringLiteral(".notes.vldownload/inside.txt"))), QByteArray("kept"));
    EXPECT_EQ(readAll(drive(QStringLiteral(".vltmp-report.txt"))), QByteArray("kept too"));
    EXPECT_EQ(
        QDir(drive(QString())).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList({QStringLiteral(".notes.vldownload"), QStringLiteral(".vltmp-report.txt"),
                     QStringLiteral("notes"), QStringLiteral("report.txt")}));

    // A user's file with a placeholder's name is never replaced by one.
    const Url plan = import(QStringLiteral("plan"), "plan", false);
    writeFile(drive(QStringLiteral(".plan.vlcloud")), "mine");
    const std::optional<Error> refused = store_->evict(plan);
    ASSERT_TRUE(refused);
    EXPECT_EQ(readAll(drive(QStringLiteral(".plan.vlcloud"))), QByteArray("mine"));
    EXPECT_EQ(readAll(plan.path()), QByteArray("plan"));

    // The placeholder name form is kept for placeholders.
    const QString source = sources_ + QStringLiteral("/a");
    writeFile(source, "a");
    EXPECT_TRUE(store_->importItem(source, QStringLiteral(".a.vlcloud"), false));
    EXPECT_TRUE(store_->importItem(source, QStringLiteral(".a.vlcloud"), true));
    EXPECT_FALSE(QFile::exists(cloud(QStringLiteral(".a.vlcloud"))));
}

TEST_F(DriveIntegrityTest, LongNamesRoundTripOrStayLocal) {
    for (int length = 240; length <= 255; ++length) {
        const QString name = QString(length - 4, QLatin1Char('n')) + QStringLiteral(".txt");
        const QByteArray content = QByteArray::number(length);
        const Url url = import(name, content, false);
        ASSERT_EQ(readAll(cloud(name)), content) << length;
        const std::optional<Error> evicted = store_->evict(url);
        if (length <= DriveHome::MaxCloudOnlyNameBytes) {
            ASSERT_FALSE(evicted) << length;
            ASSERT_TRUE(store_->isCloudOnly(url)) << length;
            download(url);
        } else {
            // No placeholder can be named for it: it stays local, whole.
            ASSERT_TRUE(evicted) << length;
        }
        EXPECT_EQ(readAll(url.path()), content) << length;
    }
}

TEST_F(DriveIntegrityTest, FolderImportTakesEveryFileAndRefusesTheHome) {
    const QByteArray folder = (sources_ + QStringLiteral("/Photos")).toUtf8();
    ASSERT_EQ(::mkdir(folder.constData(), 0755), 0);
    writeNative(folder + "/.vltmp-a.jpg", "a");
    writeNative(folder + "/.b.jpg.vldownload", "b");
    writeNative(folder + "/c\xff.jpg", "c");
    ASSERT_FALSE(store_->importItem(QString::fromUtf8(folder), QStringLiteral("Photos"), false));
    EXPECT_TRUE(ItemTree::sameContent(folder, drive(QStringLiteral("Photos")).toUtf8()));
    EXPECT_TRUE(ItemTree::sameContent(folder, cloud(QStringLiteral("Photos")).toUtf8()));

    EXPECT_TRUE(store_->importItem(store_->home().cloudDir(), QStringLiteral("Cloud"), false));
    EXPECT_TRUE(store_->importItem(store_->home().rootPath(), QStringLiteral("Home"), false));
    EXPECT_FALSE(QFile::exists(drive(QStringLiteral("Cloud"))));
}

TEST_F(DriveIntegrityTest, CloudCopiesWithoutAnItemBecomeReachable) {
    // What a move cut short between its two renames leaves: a placeholder whose cloud copy went
    // ahead, and the cloud copy under the other name.
    const Url before = import(QStringLiteral("B.txt"), "only copy", true);
    ASSERT_EQ(::rename(DriveStore::placeholderURLFor(before).path().toUtf8().constData(),
                       drive(QStringLiteral(".C.txt.vlcloud")).toUtf8().constData()),
              0);
    ASSERT_TRUE(store_->movePromisedItem(store_->driveURL(QStringLiteral("C.txt")),
                                         store_->driveURL(QStringLiteral("B.txt"))))
        << "a move onto the cloud copy must not replace it";
    EXPECT_EQ(readAll(cloud(QStringLiteral("B.txt"))), QByteArray("only copy"));

    // A folder import cut short: the cloud copy only.
    writeFile(cloud(QStringLiteral("Photos/a.jpg")), "a");

    EXPECT_EQ(store_->recover(), 3) << "the ghost, B.txt and the folder Photos";
    EXPECT_TRUE(store_->isCloudOnly(before));
    EXPECT_FALSE(QFile::exists(drive(QStringLiteral(".C.txt.vlcloud"))));
    // The folder is a cloud-only item as a whole, so importing it again finds it there.
    EXPECT_TRUE(store_->isCloudOnly(store_->driveURL(QStringLiteral("Photos"))));
    const QString photos = sources_ + QStringLiteral("/Photos");
    writeFile(photos + QStringLiteral("/a.jpg"), "a");
    const std::optional<Error> again = store_->importItem(photos, QStringLiteral("Photos"), false);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->code(), Error::FileWriteFileExists);
    download(before);
    EXPECT_EQ(readAll(before.path()), QByteArray("only copy"));
    EXPECT_EQ(store_->recover(), 0);

    // Another process's pass between a plain rename and the move of its cloud copy: the cloud
    // copy it took for a cloud-only item follows the rename, and no placeholder stays behind.
    ASSERT_EQ(::rename(before.path().toUtf8().constData(),
                       drive(QStringLiteral("D.txt")).toUtf8().constData()),
              0);
    EXPECT_EQ(store_->recover(), 1);
    ASSERT_FALSE(store_->mirrorLocalMove(before, store_->driveURL(QStringLiteral("D.txt"))));
    EXPECT_FALSE(store_->hasItemPromise(before));
    EXPECT_EQ(readAll(cloud(QStringLiteral("D.txt"))), QByteArray("only copy"));
    EXPECT_EQ(store_->recover(), 0);
}

TEST_F(DriveIntegrityTest, UnreadableRecordsAreKeptAsideNotReplaced) {
    const auto asideOf = [&](const QString& path) {
        const QFileInfo info(path);
        const QStringList aside = info.dir().entryList(
            {info.fileName() + QStringLiteral(".corrupt-*")}, QDir::Files | QDir::Hidden);
        return aside.size() == 1 ? readAll(info.dir().filePath(aside.first())) : QByteArray();
    };
    RecordFile::takeKeptAside();
    writeFile(store_->home().metadataFile(), "{\"Shared.txt\": {\"shared\": \"owner\"");
    const Url item = import(QStringLiteral("Other.txt"), "x", false);
    ASSERT_FALSE(store_->setSharedRole(item, PlaceholderFile::RoleOwner));
    EXPECT_EQ(asideOf(store_->home().metadataFile()),
              QByteArray("{\"Shared.txt\": {\"shared\": \"owner\""));

    writeFile(store_->home().keyValueStoreFile(), "{\"tags\": [");
    ASSERT_FALSE(store_->writeKeyValueStore({{QStringLiteral("k"), 1}}));
    EXPECT_EQ(asideOf(store_->home().keyValueStoreFile()), QByteArray("{\"tags\": ["));

    ContainerRecord record;
    record.identifier = QStringLiteral("com.example.Notes");
    record.localizedName = QStringLiteral("Notes");
    record.folder = QStringLiteral("Notes");
    writeFile(store_->home().containerRecordFile(record.identifier), "not json");
    ASSERT_FALSE(store_->addContainer(record));
    EXPECT_EQ(asideOf(store_->home().containerRecordFile(record.identifier)),
              QByteArray("not json"));  // Each is there for a tool to report.
    EXPECT_EQ(RecordFile::takeKeptAside().size(), 3);
}

}  // namespace
}  // namespace vl
