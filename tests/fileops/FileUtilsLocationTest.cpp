#include "fileops/FileUtils.h"

#include "model/DriveFixture.h"
#include "model/ForwardingCloudDocuments.h"
#include "platform/files/ContentTypeRegistry.h"

namespace vl::test {
namespace {

class FileUtilsLocationTest : public DriveFixture {
protected:
    void SetUp() override {
        DriveFixture::SetUp();
        addContainer(QStringLiteral("com.example.Editor"), QStringLiteral("Editor"),
                     QStringLiteral("EditorDocs"),
                     {{QStringLiteral("Pictures"), {QStringLiteral("image/png")}}});
        drive_ = CloudDocuments::shared().defaultContainerLocalizedName();
    }

    static CloudContainer container(const QString& identifier, std::optional<Url> documents,
                                    QStringList types) {
        CloudContainer record;
        record.setIdentifier(identifier);
        record.setLocalizedName(identifier);
        record.setDocumentsURL(documents);
        if (!types.isEmpty()) {
            record.setDocumentTypes({{QStringLiteral("Types"), types}});
        }
        return record;
    }

    QString drive_;
};

TEST_F(FileUtilsLocationTest, ComponentsFollowTheContainersDocumentsFolder) {
    std::optional<CloudContainer> found;
    QStringList components;
    EXPECT_FALSE(FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(
        writeFile(QStringLiteral("EditorDocs/Letters/May.txt")), &found, &components));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->identifier(), QStringLiteral("com.example.Editor"));
    EXPECT_EQ(components, QStringList({QStringLiteral("Letters"), QStringLiteral("May.txt")}));

    components = {QStringLiteral("untouched")};
    EXPECT_FALSE(FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(
        driveURL(QStringLiteral("EditorDocs"), true), nullptr, &components));
    EXPECT_EQ(components, QStringList{QStringLiteral("untouched")});
}

TEST_F(FileUtilsLocationTest, LocationNamesTheFoldersAboveTheItem) {
    const QString sep = QStringLiteral(" \u25B8 ");
    EXPECT_EQ(FileUtils::displayableLocationForURL(writeFile(QStringLiteral("Work/Plan.txt"))),
              drive_ + sep + QStringLiteral("Work"));
    EXPECT_EQ(FileUtils::displayableLocationForURL(
                  writeFile(QStringLiteral("EditorDocs/Letters/May.txt"))),
              drive_ + sep + QStringLiteral("Editor") + sep + QStringLiteral("Letters"));
    EXPECT_EQ(FileUtils::displayableLocationForURL(writeFile(QStringLiteral("EditorDocs/Top.txt"))),
              drive_ + sep + QStringLiteral("Editor"));
    EXPECT_EQ(FileUtils::displayableLocationForURL(writeFile(QStringLiteral("Root.txt"))), drive_);
    EXPECT_TRUE(logged(7).contains(QStringLiteral("PathBar: ") + drive_));
}

TEST_F(FileUtilsLocationTest, FailedContainerLookupGivesNoLocationAndLeavesOutputs) {
    const Error failure(Error::FileErrorDomain, Error::FileReadNoSuchFile);
    ForwardingCloudDocuments::install([failure](const Url&, Error* error) {
        if (error) {
            *error = failure;
        }
        return std::nullopt;
    });
    const Url file = writeFile(QStringLiteral("Work/Plan.txt"));
    std::optional<CloudContainer> found;
    QStringList components{QStringLiteral("untouched")};
    EXPECT_EQ(FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(file, &found,
                                                                                       &components),
              failure);
    EXPECT_FALSE(found);
    EXPECT_EQ(components, QStringList{QStringLiteral("untouched")});
    EXPECT_EQ(FileUtils::displayableLocationForURL(file), std::nullopt);
    EXPECT_FALSE(FileUtils::isValidExtensionForContainer(file));
}

TEST_F(FileUtilsLocationTest, MediaFilesAreKnownByTheirExtensionsType) {
    for (const char* name : {"a.jpg", "b.PNG", "c.mov", "d.mp3", "e.ogv", "f.flac"}) {
        EXPECT_TRUE(FileUtils::isAudioVideoImageFile(
            Url::fromPath(QStringLiteral("/x/") + QLatin1String(name))))
            << name;
    }
    for (const char* name : {"a.txt", "b.pdf", "Notes", "c.qqqzz", "d."}) {
        EXPECT_FALSE(FileUtils::isAudioVideoImageFile(
            Url::fromPath(QStringLiteral("/x/") + QLatin1String(name))))
            << name;
    }
    EXPECT_TRUE(
        logged(7).contains(QStringLiteral("isAudioVideoImageFile: Extension mov is video/quicktime "
                                          "which conforms to UTI public.movie")));
}

TEST_F(FileUtilsLocationTest, ExtensionsSuitTheContainersDeclaredTypes) {
    EXPECT_TRUE(
        FileUtils::isValidExtensionForContainer(writeFile(QStringLiteral("EditorDocs/pic.png"))));
    EXPECT_FALSE(
        FileUtils::isValidExtensionForContainer(writeFile(QStringLiteral("EditorDocs/doc.pdf"))));
    EXPECT_TRUE(
        FileUtils::isValidExtensionForContainer(writeFile(QStringLiteral("EditorDocs/Notes"))));
    EXPECT_TRUE(
        FileUtils::isValidExtensionForContainer(writeFile(QStringLiteral("EditorDocs/x.qqqzz"))));
    EXPECT_TRUE(FileUtils::isValidExtensionForContainer(writeFile(QStringLiteral("Mine/doc.pdf"))));
    EXPECT_TRUE(logged(6).contains(QStringLiteral("Extension png conforms to UTI image/png")));
}

TEST_F(FileUtilsLocationTest, ContainerRecordsDecideForOtherLibraries) {
    std::optional<CloudContainer> answer;
    ForwardingCloudDocuments::install([&answer](const Url&, Error*) { return answer; });
    const Url pdf = Url::fromPath(QStringLiteral("/lib/doc.pdf"));
    const Url folder = Url::fromPath(QStringLiteral("/lib"), true);

    answer = std::nullopt;
    EXPECT_FALSE(FileUtils::isValidExtensionForContainer(pdf));
    answer = container(QStringLiteral("a"), folder,
                       {QStringLiteral("public.text"), QStringLiteral("public.data")});
    EXPECT_TRUE(FileUtils::isValidExtensionForContainer(pdf));
    EXPECT_TRUE(logged(6).contains(QStringLiteral("Container supports all UTIs")));
    answer = container(QStringLiteral("b"), folder, {QStringLiteral("public.content")});
    EXPECT_TRUE(FileUtils::isValidExtensionForContainer(pdf));
    answer = container(QStringLiteral("c"), folder, {});
    EXPECT_TRUE(FileUtils::isValidExtensionForContainer(pdf));
    answer = container(QStringLiteral("d"), std::nullopt, {QStringLiteral("public.data")});
    EXPECT_FALSE(FileUtils::isValidExtensionForContainer(pdf));
    EXPECT_TRUE(
        FileUtils::isValidExtensionForContainer(Url::fromPath(QStringLiteral("/lib/Notes"))));
    answer = container(QStringLiteral("e"), folder, {QStringLiteral("application/pdf")});
    EXPECT_TRUE(FileUtils::isValidExtensionForContainer(pdf));
    answer = container(QStringLiteral("f"), folder, {ContentTypeRegistry::Image});
    EXPECT_FALSE(FileUtils::isValidExtensionForContainer(pdf));
    EXPECT_TRUE(
        FileUtils::isValidExtensionForContainer(Url::fromPath(QStringLiteral("/lib/a.jpeg"))));
}

}  // namespace
}  // namespace vl::test
