#include "CoordinationFixture.h"

#include "drive/integrity/CrashPoint.h"
#include "drive/integrity/ItemTree.h"
#include "drive/service/CloudDocumentsService.h"

#include <QDirIterator>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>

extern char** environ;

namespace vl::test {
namespace {

// The crash test kills a child process at each numbered step of a write path of the drive (see
// CrashPoint), then opens the home again (which runs the recovery pass) and checks that every
// item's content is still reachable, locally or as a cloud-only item, in one of its versions.
// The child is this test binary, run for the one test below that does an operation when asked.

const char* const OperationVariable = "VELLORA_CRASH_OPERATION";
const char* const HomeVariable = "VELLORA_CRASH_HOME";
const char* const StepVariable = "VELLORA_CRASH_STEP";

const QByteArray Old = "the old version of the text";
const QByteArray New = "the new version, longer than the old one";
const QStringList Tags = {QStringLiteral("Red"), QStringLiteral("Work")};

QByteArray readBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Runs the operation in a fresh process, killed at `step`: true when it ran to the end.
bool runKilledAt(const QString& operation, const QString& home, int step) {
    const QByteArray filter = "--gtest_filter=DriveCrashChild.RunsTheOperationItIsGiven";
    const QByteArray self = QFile::encodeName(QCoreApplication::applicationFilePath());
    char* argv[] = {const_cast<char*>(self.constData()), const_cast<char*>(filter.constData()),
                    nullptr};
    std::vector<QByteArray> variables = {QByteArray(OperationVariable) + '=' + operation.toUtf8(),
                                         QByteArray(HomeVariable) + '=' + QFile::encodeName(home),
                                         QByteArray(StepVariable) + '=' + QByteArray::number(step)};
    std::vector<char*> environment;
    for (char** entry = environ; *entry; ++entry) {
        environment.push_back(*entry);
    }
    for (QByteArray& variable : variables) {
        environment.push_back(variable.data());
    }
    environment.push_back(nullptr);
    pid_t child = 0;
    EXPECT_EQ(::posix_spawn(&child, self.constData(), nullptr, nullptr, argv, environment.data()),
              0);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) {
        EXPECT_EQ(WTERMSIG(status), SIGKILL) << operation.toStdString() << " at " << step;
        return false;
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
        << operation.toStdString() << " failed without a crash at step " << step;
    return true;
}

class DriveCrashTest : public ::testing::Test {
protected:
    // A home with a local text, a cloud-only text and a local package-like folder.
    void prepareHome(const QString& root) {
        DriveStore store{DriveHome(root)};
        ASSERT_FALSE(store.prepare());
        const QString sources = root + QStringLiteral("-sources");
        QDir().mkpath(sources + QStringLiteral("/Album"));
        for (const QString& name : {QStringLiteral("Local.txt"), QStringLiteral("Cloud.txt"),
                                    QStringLiteral("Album/a.txt")}) {
            QFile file(sources + QLatin1Char('/') + name);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(Old);
        }
        ASSERT_FALSE(store.importItem(sources + QStringLiteral("/Local.txt"),
                                      QStringLiteral("Local.txt"), false));
        ASSERT_FALSE(store.importItem(sources + QStringLiteral("/Cloud.txt"),
                                      QStringLiteral("Cloud.txt"), true));
        ASSERT_FALSE(
            store.importItem(sources + QStringLiteral("/Album"), QStringLiteral("Album"), false));
        ASSERT_FALSE(store.setTags(store.driveURL(QStringLiteral("Cloud.txt")), Tags));
        // An app library with a local file, a cloud-only one and a folder.
        ContainerRecord editor;
        editor.identifier = QStringLiteral("com.example.Editor");
        editor.localizedName = editor.folder = QStringLiteral("Editor");
        ASSERT_FALSE(store.addContainer(editor));
        ASSERT_FALSE(store.importItem(sources + QStringLiteral("/Local.txt"),
                                      QStringLiteral("Editor/Draft.txt"), false));
        ASSERT_FALSE(store.importItem(sources + QStringLiteral("/Cloud.txt"),
                                      QStringLiteral("Editor/Notes.txt"), true));
        ASSERT_FALSE(store.importItem(sources + QStringLiteral("/Album"),
                                      QStringLiteral("Editor/Chapters"), false));
        // An edit the cloud has not had yet: the eviction must send it.
        QFile edited(store.home().drivePathFor(QStringLiteral("Local.txt")));
        ASSERT_TRUE(edited.open(QIODevice::WriteOnly));
        edited.write(New);
    }

    // Every item is reachable with one of its versions, by its old name or its new one.
    void expectReachable(const QString& root, const QString& operation, int step) {
        DriveStore store{DriveHome(root)};
        ASSERT_FALSE(store.prepare());
        const auto contentOf = [&](const QStringList& names) -> QByteArray {
            for (const QString& name : names) {
                const Url url = store.driveURL(name);
                if (QFile::exists(url.path())) {
                    return readBytes(url.path());
                }
                if (store.isCloudOnly(url)) {
                    return readBytes(store.cloudPathFor(name));
                }
                // Inside a folder that is cloud-only as a whole.
                for (int depth = 0; depth < name.count(QLatin1Char('/')); ++depth) {
                    const QString folder = name.section(QLatin1Char('/'), 0, depth);
                    if (store.isCloudOnly(store.driveURL(folder))) {
                        return readBytes(store.cloudPathFor(name));
                    }
                }
            }
            return "(unreachable)";
        };
        const std::string where = operation.toStdString() + " killed at " + std::to_string(step);
        const QByteArray local =
            contentOf({QStringLiteral("Local.txt"), QStringLiteral("Moved.txt")});
        EXPECT_TRUE(local == New) << where << ": " << local.toStdString();
        const QByteArray cloud =
            contentOf({QStringLiteral("Cloud.txt"), QStringLiteral("Renamed.txt")});
        EXPECT_TRUE(cloud == Old) << where << ": " << cloud.toStdString();
        const Url cloudOnly = store.driveURL(QStringLiteral("Cloud.txt"));
        const Url renamed = store.driveURL(QStringLiteral("Renamed.txt"));
        EXPECT_EQ(store.tags(store.isReachable(cloudOnly, nullptr) ? cloudOnly : renamed), Tags)
            << where;
        EXPECT_EQ(contentOf({QStringLiteral("Album/a.txt")}), Old) << where;
        // An import cut short left nothing, or an item that is whole.
        const QByteArray imported = contentOf({QStringLiteral("Album 2/a.txt")});
        EXPECT_TRUE(imported == Old ||
                    (imported == "(unreachable)" &&
                     !QFile::exists(store.cloudPathFor(QStringLiteral("Album 2")))))
            << where << ": " << imported.toStdString();
        // The library's items are whole, or (its contents being deleted) gone from the drive
        // and from the cloud alike.
        for (const QString& name :
             {QStringLiteral("Editor/Draft.txt"), QStringLiteral("Editor/Notes.txt"),
              QStringLiteral("Editor/Chapters/a.txt")}) {
            const QByteArray content = contentOf({name});
            if (operation == QLatin1String("delete-library") && content == "(unreachable)") {
                EXPECT_FALSE(QFile::exists(store.cloudPathFor(name))) << where;
            } else {
                EXPECT_EQ(content, Old) << where << ": " << name.toStdString();
            }
        }
        EXPECT_EQ(store.recover(), 0) << where << ": the first pass left something";
        // Nothing of the service is left in the drive but placeholders of cloud-only items.
        const QStringList items = {QStringLiteral("Local.txt"), QStringLiteral("Moved.txt"),
                                   QStringLiteral("Cloud.txt"), QStringLiteral("Renamed.txt"),
                                   QStringLiteral("Album"),     QStringLiteral("Album 2"),
                                   QStringLiteral("a.txt"),     QStringLiteral("Shortcut.vlref"),
                                   QStringLiteral("Editor"),    QStringLiteral("Draft.txt"),
                                   QStringLiteral("Notes.txt"), QStringLiteral("Chapters")};
        QDirIterator it(store.home().driveDir(),
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString name = it.next().section(QLatin1Char('/'), -1);
            if (const std::optional<QString> logical = DriveHome::logicalNameOfPlaceholder(name)) {
                EXPECT_FALSE(QFile::exists(it.fileInfo().dir().filePath(*logical))) << where;
                EXPECT_TRUE(items.contains(*logical)) << where << ": " << name.toStdString();
            } else {
                EXPECT_TRUE(items.contains(name)) << where << ": " << name.toStdString();
            }
        }
    }

    void crashAtEveryStep(const QString& operation) {
        for (int step = 1; step < 200; ++step) {
            QTemporaryDir dir;
            const QString root = dir.path() + QStringLiteral("/home");
            prepareHome(root);
            const bool finished = runKilledAt(operation, root, step);
            expectReachable(root, operation, step);
            if (finished || HasFailure()) {
                EXPECT_GT(step, 1) << operation.toStdString() << " reached no crash point";
                return;
            }
        }
        ADD_FAILURE() << operation.toStdString() << " never finished";
    }
};

TEST_F(DriveCrashTest, EvictionOfAnEditedFile) {
    crashAtEveryStep(QStringLiteral("evict"));
}

TEST_F(DriveCrashTest, EvictionOfAFolder) {
    crashAtEveryStep(QStringLiteral("evict-folder"));
}

TEST_F(DriveCrashTest, MovesOfLocalAndCloudOnlyItems) {
    crashAtEveryStep(QStringLiteral("move"));
}

TEST_F(DriveCrashTest, DeletionOfAnAppLibrarysContents) {
    crashAtEveryStep(QStringLiteral("delete-library"));
}

TEST_F(DriveCrashTest, Download) {
    crashAtEveryStep(QStringLiteral("download"));
}

TEST_F(DriveCrashTest, DocumentReference) {
    crashAtEveryStep(QStringLiteral("reference"));
}

TEST_F(DriveCrashTest, ImportOfAFolder) {
    crashAtEveryStep(QStringLiteral("import"));
}

// The child's side: does nothing unless run by runKilledAt().
TEST(DriveCrashChild, RunsTheOperationItIsGiven) {
    const QString operation = QString::fromUtf8(qgetenv(OperationVariable));
    if (operation.isEmpty()) {
        GTEST_SKIP() << "run by the crash test only";
    }
    ContentTypeRegistry::setShared(std::make_shared<MimeContentTypeRegistry>());
    auto store = std::make_shared<DriveStore>(DriveHome(QFile::decodeName(qgetenv(HomeVariable))));
    ASSERT_FALSE(store->prepare());
    auto backend = std::make_shared<DriveCoordinationBackend>(store);
    ASSERT_TRUE(backend->startWatching());
    FileCoordinator::Backend::setShared(backend);
    CloudDocumentsService documents(store);
    CrashPoint::arm(qEnvironmentVariableIntValue(StepVariable));
    if (operation == QLatin1String("evict")) {
        ASSERT_FALSE(documents.evictDriveItem(store->driveURL(QStringLiteral("Local.txt"))));
    } else if (operation == QLatin1String("evict-folder")) {
        ASSERT_FALSE(documents.evictDriveItem(store->driveURL(QStringLiteral("Album"), true)));
    } else if (operation == QLatin1String("move")) {
        ASSERT_FALSE(documents.movePromisedItem(store->driveURL(QStringLiteral("Local.txt")),
                                                store->driveURL(QStringLiteral("Moved.txt"))));
        ASSERT_FALSE(documents.movePromisedItem(store->driveURL(QStringLiteral("Cloud.txt")),
                                                store->driveURL(QStringLiteral("Renamed.txt"))));
    } else if (operation == QLatin1String("download")) {
        FileCoordinator coordinator;
        std::optional<Error> error;
        coordinator.coordinateReadingItemAtURL(store->driveURL(QStringLiteral("Cloud.txt")), {},
                                               &error, [](const Url&) {});
        ASSERT_FALSE(error);
    } else if (operation == QLatin1String("delete-library")) {
        const std::optional<CloudContainer> library = documents.containerForItemAtURL(
            store->driveURL(QStringLiteral("Editor/Draft.txt")), nullptr);
        ASSERT_TRUE(library);
        ASSERT_FALSE(documents.deleteAllContentsOfContainer(*library));
    } else if (operation == QLatin1String("reference")) {
        ASSERT_FALSE(store->writeDocumentReference(
            store->driveURL(QStringLiteral("Shortcut.vlref")), QStringLiteral("Local.txt")));
    } else if (operation == QLatin1String("import")) {
        ASSERT_FALSE(store->importItem(store->home().rootPath() + QStringLiteral("-sources/Album"),
                                       QStringLiteral("Album 2"), false));
    }
    FileCoordinator::Backend::setShared(nullptr);
    backend->stopWatching();
}

}  // namespace
}  // namespace vl::test
