#include "SeedDemoCommand.h"

#include "Arguments.h"
#include "DemoMedia.h"
#include "SigninCommand.h"
#include "TagDictionary.h"
#include "ToolContext.h"
#include "platform/files/ContentTypeRegistry.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

namespace vl {

namespace {

using Scene = DemoMedia::Scene;

QString errorText(const Error& error) {
    return ToolContext::describe(error);
}

// Builds the demo drive file by file. Every step answers an error text or nothing.
class Seeder {
public:
    Seeder(ToolContext& context, QString staging)
        : context_(context), store_(context.store()), staging_(std::move(staging)) {}

    std::optional<QString> folder(const QString& path) {
        if (auto error = context_.makeFolder(path)) {
            return QStringLiteral("can't make folder ") + path + QStringLiteral(": ") +
                   errorText(*error);
        }
        return std::nullopt;
    }

    // Imports a staged file to `path`, local or cloud-only.
    std::optional<QString> add(const QString& path, bool cloudOnly = false) {
        const QString parent = QFileInfo(path).path();
        if (parent != QLatin1String(".")) {
            if (auto error = folder(parent)) {
                return error;
            }
        }
        if (auto error = store_.importItem(staged(path), path, cloudOnly)) {
            return QStringLiteral("can't add ") + path + QStringLiteral(": ") + errorText(*error);
        }
        return std::nullopt;
    }

    std::optional<QString> text(const QString& path, const QString& content,
                                bool cloudOnly = false) {
        if (auto error = DemoMedia::writeFile(staged(path), content.toUtf8())) {
            return error;
        }
        return add(path, cloudOnly);
    }

    struct TextFile {
        const char* path;  // UTF-8
        const char* content;
        bool cloudOnly = false;
    };
    std::optional<QString> texts(std::initializer_list<TextFile> files) {
        for (const TextFile& file : files) {
            if (auto error = text(QString::fromUtf8(file.path), QString::fromUtf8(file.content),
                                  file.cloudOnly)) {
                return error;
            }
        }
        return std::nullopt;
    }

    std::optional<QString> picture(const QString& path, Scene scene, QSize size,
                                   const QString& caption, bool cloudOnly = false) {
        const char* format = path.endsWith(QLatin1String(".png")) ? "PNG" : "JPEG";
        const QImage image = DemoMedia::picture(scene, size, caption);
        if (auto error = DemoMedia::writeImage(image, staged(path), format, 92)) {
            return QStringLiteral("can't draw ") + path + QStringLiteral(": ") + *error;
        }
        return add(path, cloudOnly);
    }

    std::optional<QString> sound(const QString& path, double seconds, const QList<double>& chord,
                                 int channels, bool cloudOnly = false) {
        if (auto error =
                DemoMedia::writeFile(staged(path), DemoMedia::wav(seconds, chord, channels))) {
            return error;
        }
        return add(path, cloudOnly);
    }

    std::optional<QString> pdf(const QString& path, const QString& title,
                               const QStringList& pages) {
        if (auto error = DemoMedia::writePdf(staged(path), title, pages)) {
            return QStringLiteral("can't write ") + path + QStringLiteral(": ") + *error;
        }
        return add(path);
    }

    std::optional<QString> openDocument(const QString& path, const QString& title,
                                        const QStringList& paragraphs) {
        if (auto error = DemoMedia::writeOpenDocumentText(staged(path), title, paragraphs)) {
            return QStringLiteral("can't write ") + path + QStringLiteral(": ") + *error;
        }
        return add(path);
    }

    std::optional<QString> movie(const QString& path, const QString& caption, int frames) {
        if (auto error = DemoMedia::writeMovie(staged(path), caption, frames)) {
            return QStringLiteral("can't write ") + path + QStringLiteral(": ") + *error;
        }
        return add(path);
    }

    // A cloud-only movie whose cloud copy is written in place with a hole for most of its size:
    // copying it through an import would fill the hole in.
    std::optional<QString> sparseCloudMovie(const QString& path, const QString& caption,
                                            quint64 totalBytes) {
        if (auto error = folder(QFileInfo(path).path())) {
            return error;
        }
        const QString cloudPath = context_.home().cloudPathFor(path);
        const QString probe = staged(QStringLiteral("probe.avi"));
        if (auto error = DemoMedia::writeMovie(probe, caption, 36)) {
            return error;
        }
        const quint64 header = quint64(QFileInfo(probe).size()) + 8;
        if (auto error = DemoMedia::writeMovie(cloudPath, caption, 36, totalBytes - header)) {
            return QStringLiteral("can't write ") + path + QStringLiteral(": ") + *error;
        }
        const QFileInfo info(cloudPath);
        PlaceholderFile record;
        record.name = QFileInfo(path).fileName();
        record.size = quint64(info.size());
        record.contentType =
            ContentTypeRegistry::shared().identifierForFileName(record.name, false);
        record.creationDate = QDateTime::currentDateTimeUtc().addDays(-40);
        record.modificationDate = QDateTime::currentDateTimeUtc().addDays(-12);
        const Url placeholder = DriveStore::placeholderURLFor(store_.driveURL(path));
        if (auto error = store_.writePlaceholder(placeholder, record)) {
            return QStringLiteral("can't write the placeholder of ") + path + QStringLiteral(": ") +
                   errorText(*error);
        }
        return std::nullopt;
    }

    std::optional<QString> tag(const QString& path, const QStringList& tags) {
        if (auto error = store_.setTags(store_.driveURL(path), tags)) {
            return QStringLiteral("can't tag ") + path + QStringLiteral(": ") + errorText(*error);
        }
        return std::nullopt;
    }

    std::optional<QString> share(const QString& path, const QString& role) {
        if (auto error = store_.setSharedRole(store_.driveURL(path), role)) {
            return QStringLiteral("can't share ") + path + QStringLiteral(": ") + errorText(*error);
        }
        return std::nullopt;
    }

    std::optional<QString> reference(const QString& path, const QString& target) {
        if (auto error = store_.writeDocumentReference(store_.driveURL(path), target)) {
            return QStringLiteral("can't write the reference ") + path + QStringLiteral(": ") +
                   errorText(*error);
        }
        return std::nullopt;
    }

    std::optional<QString> library(const QString& identifier, const QString& name,
                                   const QString& levels, const QStringList& types,
                                   const QList<CloudContainer::DocumentType>& packages = {}) {
        ContainerRecord record;
        record.identifier = identifier;
        record.localizedName = name;
        record.folder = name;
        record.folderLevels = levels;
        record.documentTypes.append({name + QStringLiteral(" Document"), types, false, {}});
        record.documentTypes += packages;
        if (auto error = store_.addContainer(record)) {
            return QStringLiteral("can't add the app library ") + name + QStringLiteral(": ") +
                   errorText(*error);
        }
        return std::nullopt;
    }

private:
    QString staged(const QString& path) const {
        const QString file = staging_ + QLatin1Char('/') + path;
        QDir().mkpath(QFileInfo(file).path());
        return file;
    }

    ToolContext& context_;
    DriveStore& store_;
    QString staging_;
};

const QString Lorem = QStringLiteral(
    "Revenue grew steadily through the quarter, led by the subscription plans launched in the "
    "spring. Costs stayed within the budget agreed in January, and the support backlog fell by a "
    "third after the new help centre went live.\n\n"
    "The team shipped two releases: the first brought offline folders and faster search, the "
    "second a redesigned sharing sheet. Both were well received; the ratings rose from 4.3 to "
    "4.6 stars.\n\n"
    "Next quarter we focus on reliability: fewer sync conflicts, clearer progress while large "
    "files download, and better behaviour on slow cellular connections.");

}  // namespace

bool SeedDemoCommand::hasDrive(const ToolContext& context) {
    const QDir drive(context.home().driveDir());
    const QDir cloud(context.home().cloudDir());
    const auto filter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    return (drive.exists() && !drive.entryList(filter).isEmpty()) ||
           (cloud.exists() && !cloud.entryList(filter).isEmpty());
}

std::optional<QString> SeedDemoCommand::removeDrive(ToolContext& context) {
    const DriveHome& home = context.home();
    for (const QString& dir : {home.driveDir(), home.cloudDir(), home.containersDir()}) {
        if (QFileInfo::exists(dir) && !QDir(dir).removeRecursively()) {
            return QStringLiteral("can't remove ") + dir;
        }
    }
    for (const QString& file : {home.keyValueStoreFile(), home.metadataFile()}) {
        if (QFileInfo::exists(file) && !QFile::remove(file)) {
            return QStringLiteral("can't remove ") + file;
        }
    }
    return std::nullopt;
}

int SeedDemoCommand::run(ToolContext& context, Arguments& arguments) {
    const bool force = arguments.takeFlag(QStringLiteral("force"));
    int status = 0;
    if (!context.expectNothingMore(arguments, 0, &status)) {
        return status;
    }
    if (hasDrive(context)) {
        if (!force) {
            return context.fail(QStringLiteral("the home ") + context.home().rootPath() +
                                QStringLiteral(" already has a drive; use --force to replace it"));
        }
        if (auto error = removeDrive(context)) {
            return context.fail(*error);
        }
    }
    if (!context.prepare()) {
        return ToolContext::Failure;
    }
    QTemporaryDir staging(QDir::tempPath() + QStringLiteral("/velloractl-seed-XXXXXX"));
    if (!staging.isValid()) {
        return context.fail(QStringLiteral("can't make a staging folder: ") +
                            staging.errorString());
    }
    if (auto error = seed(context, staging.path())) {
        return context.fail(QStringLiteral("seed-demo: ") + *error);
    }
    context.print(QStringLiteral("Seeded the demo drive in ") + context.home().rootPath());
    return 0;
}

std::optional<QString> SeedDemoCommand::seed(ToolContext& context, const QString& staging) {
    DriveStore& store = context.store();
    Seeder s(context, staging);

    Error accountError;
    if (!store.readAccount(&accountError)) {
        AccountRecord account;
        account.account = SigninCommand::DefaultAccount;
        account.identity = AccountRecord::makeIdentity();
        account.freeBytes = 12'345'678'901ull;
        if (auto error = store.writeAccount(account)) {
            return QStringLiteral("can't sign in: ") + errorText(*error);
        }
    }

    // The three app libraries, beside the user's folders in the root list.
    const std::pair<const char*, std::optional<QString> (*)(Seeder&)> steps[] = {
        {"libraries",
         [](Seeder& s) -> std::optional<QString> {
             if (auto e = s.library(QStringLiteral("com.tessaly.Writer"), QStringLiteral("Writer"),
                                    CloudContainer::FolderLevelsAny,
                                    {QStringLiteral("text/plain"), QStringLiteral("text/markdown"),
                                     QStringLiteral("application/vnd.oasis.opendocument.text")},
                                    {SeedDemoCommand::manuscriptType()})) {
                 return e;
             }
             if (auto e = s.library(QStringLiteral("com.tessaly.PhotoStudio"),
                                    QStringLiteral("Photo Studio"), CloudContainer::FolderLevelsOne,
                                    {ContentTypeRegistry::Image})) {
                 return e;
             }
             return s.library(QStringLiteral("com.tessaly.Notes"), QStringLiteral("Notes"),
                              CloudContainer::FolderLevelsNone,
                              {QStringLiteral("text/plain"), QStringLiteral("text/markdown")});
         }},
        {"documents",
         [](Seeder& s) -> std::optional<QString> {
             if (auto e = s.texts({
                     {"Welcome.md",
                      "# Welcome to your Vellora drive\n\n"
                      "Your folders and files live here and on all your devices.\n\n"
                      "- **Documents**: reports, lists and letters\n"
                      "- **Photos**, **Music** and **Videos**\n"
                      "- App libraries: *Writer*, *Photo Studio* and *Notes*\n\n"
                      "Items with a cloud badge are downloaded when you open them.\n"},
                     {"Documents/Reading List.md",
                      "# Reading list\n\n1. The Left Hand of Darkness\n"
                      "2. A Pattern Language\n3. The Overstory\n4. Thinking in Systems\n"},
                     {"Documents/Packing List.txt",
                      "Passport\nCharger\nRain jacket\nWalking shoes\nSunscreen\n"
                      "Book for the train\n"},
                     {"Documents/Trip Plan.md",
                      "# Lisbon, 12-16 May\n\n| Day | Plan |\n|---|---|\n"
                      "| Mon | Arrive, Alfama walk |\n| Tue | Belém, Tile museum |\n"
                      "| Wed | Sintra |\n| Thu | LX Factory, sunset at the Miradouro |\n"
                      "\nShared by Ana.\n"},
                     {"Documents/Budget 2024.csv",
                      "Month,Income,Expenses\nJanuary,4200,3100\nFebruary,4200,2950\n"
                      "March,4350,3300\n"},
                     {"Documents/Letters/Letter to Ana.txt",
                      "Dear Ana,\n\nThank you for the wonderful weekend. The photos are in our "
                      "shared folder.\n\nLove,\nSam\n"},
                     {"Work/Projects/Roadmap.md",
                      "# Roadmap\n\n## Q3\n- Offline folders\n- Faster search\n\n## Q4\n"
                      "- Sharing sheet\n"},
                     {"Work/Meeting Notes.txt",
                      "Standup, Monday\n- Release candidate on Thursday\n"
                      "- Sam reviews the download screen\n",
                      true},
                 })) {
                 return e;
             }
             QStringList pages;
             pages << QStringLiteral("Summary\n\n") + Lorem
                   << QStringLiteral("Details\n\n") + Lorem + QStringLiteral("\n\n") + Lorem
                   << QStringLiteral("Outlook\n\n") + Lorem;
             if (auto e = s.pdf(QStringLiteral("Documents/Quarterly Report.pdf"),
                                QStringLiteral("Quarterly Report"), pages)) {
                 return e;
             }
             return s.openDocument(
                 QStringLiteral("Work/Meeting Agenda.odt"), QStringLiteral("Meeting agenda"),
                 {QStringLiteral("1. Release status"), QStringLiteral("2. Download screen review"),
                  QStringLiteral("3. Any other business")});
         }},
        {"media",
         [](Seeder& s) -> std::optional<QString> {
             if (auto e = s.picture(QStringLiteral("Photos/Sunset.jpg"), Scene::Sunset,
                                    QSize(1600, 1067), QStringLiteral("Sunset over the bay"))) {
                 return e;
             }
             if (auto e = s.picture(QStringLiteral("Photos/Mountains.png"), Scene::Mountains,
                                    QSize(1200, 800), QStringLiteral("Three ridges"))) {
                 return e;
             }
             if (auto e = s.picture(QStringLiteral("Photos/Garden.jpg"), Scene::Garden,
                                    QSize(1280, 960), QStringLiteral("Spring garden"))) {
                 return e;
             }
             // Cloud-only under 6 MiB: downloads by itself on Wi-Fi.
             if (auto e = s.picture(QStringLiteral("Photos/City at Night.jpg"), Scene::City,
                                    QSize(3000, 2000), QStringLiteral("City at night"), true)) {
                 return e;
             }
             if (auto e = s.sound(QStringLiteral("Music/Tone A440.wav"), 3.0, {440.0}, 1)) {
                 return e;
             }
             // Cloud-only over 6 MiB: waits for the Download button.
             if (auto e = s.sound(QStringLiteral("Music/Evening Chord.wav"), 50.0,
                                  {220.0, 277.18, 329.63}, 2, true)) {
                 return e;
             }
             if (auto e = s.movie(QStringLiteral("Videos/Bouncing Ball.avi"),
                                  QStringLiteral("Bouncing ball"), 48)) {
                 return e;
             }
             // Cloud-only over 100 MiB: refused on cellular.
             return s.sparseCloudMovie(QStringLiteral("Videos/Documentary (Full Length).avi"),
                                       QStringLiteral("Documentary"),
                                       SeedDemoCommand::LargeMovieBytes);
         }},
        {"library contents",
         [](Seeder& s) -> std::optional<QString> {
             if (auto e = s.texts({
                     {"Writer/Novel Outline.txt",
                      "Part one: the lighthouse\nPart two: the storm\nPart three: the return\n"},
                     {"Writer/Drafts/Chapter 1.md",
                      "# Chapter 1\n\nThe lamp had not been lit for eleven years when Mara "
                      "climbed the stairs.\n"},
                     {"Writer/Drafts/Chapter 2.md",
                      "# Chapter 2\n\nBy morning the sea had taken the jetty.\n", true},
                     // A manuscript is one document stored as a folder (a package).
                     {"Writer/The Lighthouse.manuscript/Text.md",
                      "# The Lighthouse\n\nThe lamp had not been lit for eleven years.\n"},
                     {"Writer/The Lighthouse.manuscript/Outline.txt",
                      "1. The keeper's daughter\n2. The storm\n3. The return\n"},
                     {"Notes/Shopping.txt", "Bread\nOlive oil\nTomatoes\nCoffee\n"},
                     {"Notes/Ideas.md",
                      "# Ideas\n\n- A map of every bakery in town\n- Learn to sail\n", true},
                 })) {
                 return e;
             }
             if (auto e = s.openDocument(QStringLiteral("Writer/Synopsis.odt"),
                                         QStringLiteral("Synopsis"),
                                         {QStringLiteral("A keeper's daughter relights an "
                                                         "abandoned lighthouse."),
                                          QStringLiteral("The storm tests everyone on the "
                                                         "island.")})) {
                 return e;
             }
             if (auto e = s.picture(QStringLiteral("Photo Studio/Collage.png"), Scene::Beach,
                                    QSize(1024, 768), QStringLiteral("Summer collage"))) {
                 return e;
             }
             return s.picture(QStringLiteral("Photo Studio/Edits/Beach Retouched.jpg"),
                              Scene::Beach, QSize(1600, 1000), QStringLiteral("Beach, retouched"));
         }},
        {"sharing, references and tags",
         [](Seeder& s) -> std::optional<QString> {
             if (auto e = s.share(QStringLiteral("Documents/Trip Plan.md"),
                                  PlaceholderFile::RoleParticipant)) {
                 return e;
             }
             if (auto e = s.share(QStringLiteral("Documents/Budget 2024.csv"),
                                  PlaceholderFile::RoleOwner)) {
                 return e;
             }
             if (auto e = s.reference(QStringLiteral("Quarterly Report.vlref"),
                                      QStringLiteral("Documents/Quarterly Report.pdf"))) {
                 return e;
             }
             const std::pair<const char*, QStringList> tagged[] = {
                 {"Documents/Quarterly Report.pdf",
                  {QStringLiteral("Work"), QStringLiteral("Important")}},
                 {"Documents/Trip Plan.md", {QStringLiteral("Travel")}},
                 {"Documents/Packing List.txt", {QStringLiteral("Travel")}},
                 {"Photos/Sunset.jpg", {QStringLiteral("Family"), QStringLiteral("Travel")}},
                 {"Photos/City at Night.jpg", {QStringLiteral("Travel")}},
                 {"Work/Projects/Roadmap.md", {QStringLiteral("Work"), QStringLiteral("Ideas")}},
                 {"Notes/Ideas.md", {QStringLiteral("Ideas")}},
             };
             for (const auto& [path, tags] : tagged) {
                 if (auto e = s.tag(QString::fromUtf8(path), tags)) {
                     return e;
                 }
             }
             return std::nullopt;
         }},
    };
    for (const auto& [what, step] : steps) {
        if (auto error = step(s)) {
            return *error;
        }
        context.print(QStringLiteral("  made the ") + QString::fromLatin1(what));
    }

    const QList<TagDictionary::Tag> tags{
        {QStringLiteral("Important"), 6}, {QStringLiteral("Work"), 4},
        {QStringLiteral("Family"), 2},    {QStringLiteral("Travel"), 7},
        {QStringLiteral("Ideas"), 5},     {QStringLiteral("Personal"), 3},
        {QStringLiteral("Archive"), 1},
    };
    Error kvError;
    QVariantMap values = store.readKeyValueStore(&kvError);
    values.insert(TagDictionary::StoreKey, TagDictionary::toValue(tags));
    if (auto error = store.writeKeyValueStore(values)) {
        return QStringLiteral("can't write the tag dictionary: ") + errorText(*error);
    }
    return std::nullopt;
}

}  // namespace vl
