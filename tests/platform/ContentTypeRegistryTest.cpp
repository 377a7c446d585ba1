#include "platform/files/ContentTypeRegistry.h"
#include "platform/files/MimeContentTypeRegistry.h"

#include <gtest/gtest.h>

namespace vl {
namespace {

class ContentTypeRegistryTest : public ::testing::Test {
protected:
    MimeContentTypeRegistry registry;
};

TEST_F(ContentTypeRegistryTest, TypesComeFromTheExtensionOnly) {
    EXPECT_EQ(registry.preferredIdentifierForExtension(QStringLiteral("png")),
              QStringLiteral("image/png"));
    EXPECT_EQ(registry.preferredIdentifierForExtension(QStringLiteral("PDF")),
              QStringLiteral("application/pdf"));
    EXPECT_TRUE(registry.preferredIdentifierForExtension(QString()).isEmpty());
    EXPECT_TRUE(registry.preferredIdentifierForExtension(QStringLiteral("nosuchext42")).isEmpty());

    // A file that does not exist is typed by its name; a file without an extension is data.
    EXPECT_EQ(registry.identifierForFileName(QStringLiteral("/nowhere/Photo.JPG"), false),
              QStringLiteral("image/jpeg"));
    EXPECT_EQ(registry.identifierForFileName(QStringLiteral("notes"), false),
              ContentTypeRegistry::UnknownData);
    EXPECT_EQ(registry.identifierForFileName(QStringLiteral("archive.nosuchext42"), false),
              ContentTypeRegistry::UnknownData);
}

TEST_F(ContentTypeRegistryTest, DirectoriesAreFoldersWhateverTheirName) {
    EXPECT_EQ(registry.identifierForFileName(QStringLiteral("Holiday.png"), true),
              ContentTypeRegistry::Folder);
    EXPECT_EQ(registry.identifierForFileName(QStringLiteral("Letters/"), true),
              ContentTypeRegistry::Folder);
    EXPECT_FALSE(registry.conformsTo(ContentTypeRegistry::Folder, ContentTypeRegistry::Data));
    EXPECT_TRUE(
        registry.conformsTo(QStringLiteral("inode/directory"), ContentTypeRegistry::Folder));
}

TEST_F(ContentTypeRegistryTest, MediaKindsFollowSubtypesAncestorsAndIcons) {
    auto typeOf = [&](const char* ext) {
        return registry.preferredIdentifierForExtension(QString::fromLatin1(ext));
    };
    EXPECT_TRUE(registry.conformsTo(typeOf("jpg"), ContentTypeRegistry::Image));
    EXPECT_TRUE(registry.conformsTo(typeOf("svg"), ContentTypeRegistry::Image));
    EXPECT_TRUE(registry.conformsTo(typeOf("mov"), ContentTypeRegistry::Movie));
    EXPECT_TRUE(registry.conformsTo(typeOf("mp3"), ContentTypeRegistry::Audio));
    EXPECT_FALSE(registry.conformsTo(typeOf("mp3"), ContentTypeRegistry::Movie));
    EXPECT_FALSE(registry.conformsTo(typeOf("pdf"), ContentTypeRegistry::Image));
    // Ogg: the container type is a movie only by its icon; Ogg audio stays audio.
    EXPECT_TRUE(registry.conformsTo(QStringLiteral("application/ogg"), ContentTypeRegistry::Movie));
    EXPECT_TRUE(registry.conformsTo(typeOf("ogg"), ContentTypeRegistry::Audio));
    EXPECT_FALSE(registry.conformsTo(typeOf("ogg"), ContentTypeRegistry::Movie));
    EXPECT_TRUE(registry.conformsTo(typeOf("ogv"), ContentTypeRegistry::Movie));
    // Subtypes conform to their parents, by name or MIME alias.
    EXPECT_TRUE(registry.conformsTo(typeOf("md"), QStringLiteral("text/plain")));
    EXPECT_TRUE(registry.conformsTo(typeOf("md"), ContentTypeRegistry::Text));
    EXPECT_TRUE(registry.conformsTo(typeOf("odt"), QStringLiteral("application/zip")));
    EXPECT_TRUE(registry.conformsTo(QStringLiteral("audio/mp3"), QStringLiteral("audio/mpeg")));
    EXPECT_FALSE(
        registry.conformsTo(QStringLiteral("text/plain"), QStringLiteral("text/markdown")));
}

TEST_F(ContentTypeRegistryTest, DataAndContentAreAbstractSupertypes) {
    for (const char* ext : {"png", "pdf", "odt", "zip", "wav", "avi", "txt"}) {
        const QString type = registry.preferredIdentifierForExtension(QString::fromLatin1(ext));
        EXPECT_TRUE(registry.conformsTo(type, ContentTypeRegistry::Data)) << ext;
        EXPECT_TRUE(registry.conformsTo(type, ContentTypeRegistry::Item)) << ext;
    }
    EXPECT_TRUE(registry.conformsTo(ContentTypeRegistry::UnknownData, ContentTypeRegistry::Data));
    EXPECT_TRUE(
        registry.conformsTo(QStringLiteral("application/pdf"), ContentTypeRegistry::Content));
    EXPECT_TRUE(registry.conformsTo(QStringLiteral("image/png"), ContentTypeRegistry::Content));
    EXPECT_FALSE(
        registry.conformsTo(QStringLiteral("application/zip"), ContentTypeRegistry::Content));
    EXPECT_TRUE(registry.conformsTo(ContentTypeRegistry::Image, ContentTypeRegistry::Data));
    EXPECT_FALSE(registry.conformsTo(ContentTypeRegistry::Data, ContentTypeRegistry::Image));
    EXPECT_FALSE(
        registry.conformsTo(QStringLiteral("com.example.unknown"), ContentTypeRegistry::Data));
    EXPECT_FALSE(registry.conformsTo(QString(), QString()));
}

TEST_F(ContentTypeRegistryTest, OnlyMimeNamesAndAbstractTypesAreKnown) {
    // Reverse-domain names are nobody's aliases here: they conform only to themselves.
    EXPECT_FALSE(
        registry.conformsTo(QStringLiteral("com.adobe.pdf"), QStringLiteral("application/pdf")));
    EXPECT_FALSE(
        registry.conformsTo(QStringLiteral("application/pdf"), QStringLiteral("com.adobe.pdf")));
    EXPECT_TRUE(registry.preferredExtension(QStringLiteral("com.adobe.pdf")).isEmpty());
    // MIME aliases still resolve.
    EXPECT_TRUE(registry.conformsTo(QStringLiteral("audio/mp3"), QStringLiteral("audio/mpeg")));
}

TEST_F(ContentTypeRegistryTest, DescriptionsIconsAndExtensions) {
    EXPECT_FALSE(registry.localizedDescription(QStringLiteral("image/png")).isEmpty());
    EXPECT_FALSE(registry.localizedDescription(ContentTypeRegistry::Folder).isEmpty());
    EXPECT_TRUE(registry.localizedDescription(QStringLiteral("com.example.unknown")).isEmpty());
    EXPECT_EQ(registry.genericIconName(QStringLiteral("image/png")),
              QStringLiteral("image-x-generic"));
    EXPECT_EQ(registry.iconName(QStringLiteral("image/png")), QStringLiteral("image-png"));
    EXPECT_EQ(registry.genericIconName(ContentTypeRegistry::Folder), QStringLiteral("folder"));
    EXPECT_EQ(registry.preferredExtension(QStringLiteral("image/jpeg")), QStringLiteral("jpg"));
    EXPECT_EQ(registry.preferredExtension(QStringLiteral("application/pdf")),
              QStringLiteral("pdf"));
    EXPECT_TRUE(registry.extensions(QStringLiteral("image/jpeg")).contains(QStringLiteral("jpeg")));
}

TEST(ContentTypeRegistrySharedTest, AnInstalledRegistryReplacesTheDefault) {
    ContentTypeRegistry& original = ContentTypeRegistry::shared();
    EXPECT_EQ(original.preferredIdentifierForExtension(QStringLiteral("png")),
              QStringLiteral("image/png"));
    auto mine = std::make_shared<MimeContentTypeRegistry>();
    ContentTypeRegistry::setShared(mine);
    EXPECT_EQ(&ContentTypeRegistry::shared(), mine.get());
    ContentTypeRegistry::setShared(nullptr);
}

}  // namespace
}  // namespace vl
