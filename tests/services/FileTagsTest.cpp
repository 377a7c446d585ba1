#include "services/FileTagColors.h"
#include "services/FileTags.h"
#include "services/LogCapture.h"

#include "drive/service/DriveService.h"
#include "drive/store/DriveStore.h"
#include "platform/cloud/KeyValueStore.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

namespace vl::test {
namespace {

using Entry = std::pair<QVariant, QVariant>;  // "n", "l"; an invalid QVariant leaves it out

QVariantMap dictionary(const QList<Entry>& entries, const QVariant& version = 2) {
    QVariantList tags;
    for (const auto& [name, label] : entries) {
        QVariantMap tag;
        if (name.isValid()) {
            tag.insert(QStringLiteral("n"), name);
        }
        if (label.isValid()) {
            tag.insert(QStringLiteral("l"), label);
        }
        tags.append(tag);
    }
    QVariantMap map{{QStringLiteral("CurioTags"), tags}};
    if (version.isValid()) {
        map.insert(QStringLiteral("CurioTagDictVersion"), version);
    }
    return map;
}

// The store as velloractl writes it: kvstore.json of a drive home, beside a running service.
class FileTagsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<DriveStore>(DriveHome(dir_.filePath(QStringLiteral("home"))));
        ASSERT_FALSE(store_->prepare());
        service_ = DriveService::install(dir_.filePath(QStringLiteral("home")));
    }
    void TearDown() override {
        service_.reset();
        KeyValueStore::setShared(nullptr);
        FileTags::tagColorsDidChange();
    }
    void storeDictionary(const QVariant& value) {
        QVariantMap values = store_->readKeyValueStore();
        values.insert(FileTags::TagDictionaryKey, value);
        ASSERT_FALSE(store_->writeKeyValueStore(values));
    }
    // The service notices another process's write on its own; wait for the tags it brings.
    bool waitForTags(const QStringList& expected) {
        QElapsedTimer timer;
        timer.start();
        while (FileTags::allTags() != expected && timer.elapsed() < 10'000) {
            QCoreApplication::processEvents();
            QThread::msleep(5);
        }
        return FileTags::allTags() == expected;
    }

    LogCapture log_;
    QTemporaryDir dir_;
    std::unique_ptr<DriveStore> store_;
    std::shared_ptr<DriveService> service_;
};

TEST_F(FileTagsTest, ReadsTheStoredDictionaryAndFollowsChangesFromAnotherDevice) {
    storeDictionary(dictionary({{"Red", 6}, {"Work", 4}, {"Plain", {}}, {"Odd", 9}}));
    ASSERT_TRUE(waitForTags({"Red", "Work", "Plain", "Odd"}));
    const auto colors = FileTags::tagColorsByTag();
    EXPECT_EQ(colors.value("Red"), FileTags::tagBlipColors().at(6));
    EXPECT_EQ(colors.value("Work"), FileTags::tagBlipColors().at(4));
    // No colour and an index past the table are both the light grey of "no colour".
    const QColor lightGrey = QColor::fromRgbF(0.8f, 0.8f, 0.8f, 1.0f);
    EXPECT_EQ(colors.value("Plain"), lightGrey);
    EXPECT_EQ(colors.value("Odd"), lightGrey);

    storeDictionary(dictionary({{"Home", 2}}));
    ASSERT_TRUE(waitForTags({"Home"}));
    EXPECT_EQ(FileTags::tagColorsByTag().size(), 1);
}

TEST_F(FileTagsTest, WrongVersionOrEmptyDictionaryGivesNoTags) {
    FileTags::tagTableFromDictionary(dictionary({{"Red", 6}}, 1));
    EXPECT_EQ(log_.count("Curio tag dictionary has incorrect version (1, should be 2)"), 1);
    const auto missingVersion = FileTags::tagTableFromDictionary(dictionary({{"Red", 6}}, {}));
    EXPECT_EQ(log_.count("Curio tag dictionary has incorrect version (0, should be 2)"), 1);
    EXPECT_TRUE(missingVersion.tags.isEmpty());
    EXPECT_TRUE(missingVersion.colorsByTag.isEmpty());
    EXPECT_GE(log_.count("Curio tag dictionary is empty"), 2);

    FileTags::tagTableFromDictionary(QVariant());
    FileTags::tagTableFromDictionary(QStringLiteral("not a dictionary"));
    EXPECT_GE(log_.count("Curio tag dictionary is empty"), 4);
}

TEST_F(FileTagsTest, LaterEntryOfTheSameNameWinsAndNamelessEntriesAreSkipped) {
    const auto table = FileTags::tagTableFromDictionary(dictionary({{"A", 2}, {{}, 3}, {"A", 7}}));
    EXPECT_EQ(table.tags, QStringList({"A", "A"}));
    EXPECT_EQ(table.colorsByTag.value("A"), FileTags::tagBlipColors().at(7));
}

TEST_F(FileTagsTest, BlipsAreSizedAndFilledInTheTagsColour) {
    KeyValueStore::shared().setObject(dictionary({{"Red", 6}, {"Blue", 4}, {"Green", 2}}),
                                      FileTags::TagDictionaryKey);
    FileTags::tagColorsDidChange();

    const QImage three = FileTags::blipWithTagsHeightScale({"Red", "Blue", "Green"}, 10, 1);
    EXPECT_EQ(three.size(), QSize(20, 10));
    EXPECT_EQ(three.pixelColor(2, 5).rgb(), FileTags::tagBlipColors().at(6).rgb());
    EXPECT_EQ(three.pixelColor(15, 5).rgb(), FileTags::tagBlipColors().at(2).rgb());
    EXPECT_EQ(FileTags::blipWithTagsHeightScale({"Red"}, 10, 2).size(), QSize(20, 20));
    EXPECT_TRUE(FileTags::blipWithTagsHeightScale({}, 10, 1).isNull());

    const QImage one =
        FileTags::blipWithTagImageSizeBlipHeightOffset("Blue", QSizeF(12, 20), 10, QPointF(0, 6));
    EXPECT_EQ(one.size(), QSize(12, 20));
    EXPECT_EQ(one.pixelColor(5, 11), FileTags::tagBlipColors().at(4));
    EXPECT_EQ(one.pixelColor(5, 2).alpha(), 0);
    const QImage unknown =
        FileTags::blipWithTagImageSizeBlipHeightOffset("Nobody", QSizeF(12, 20), 10, QPointF(0, 6));
    EXPECT_EQ(unknown.pixelColor(5, 11).alpha(), 0);
    EXPECT_TRUE(
        FileTags::blipWithTagImageSizeBlipHeightOffset(QString(), QSizeF(12, 20), 10, {}).isNull());
}

void expectColor(const QColor& color, double r, double g, double b, double a) {
    float cr = 0, cg = 0, cb = 0, ca = 0;
    color.getRgbF(&cr, &cg, &cb, &ca);
    EXPECT_NEAR(cr, r, 2e-3);
    EXPECT_NEAR(cg, g, 2e-3);
    EXPECT_NEAR(cb, b, 2e-3);
    EXPECT_NEAR(ca, a, 2e-3);
}

QColor rgba(double r, double g, double b, double a = 1) {
    return QColor::fromRgbF(float(r), float(g), float(b), float(a));
}

// Every expected value below was worked out by hand from the filter's formula.
TEST(FileTagColorsTest, EachFilterBlendsAsWorkedByHand) {
    using C = FileTagColors;
    const QColor red = rgba(1, 0, 0);
    expectColor(C::colorBlendedWithColor(red, rgba(1, 1, 1, 0.5)), 1, 0.5, 0.5, 1);
    expectColor(C::colorBlendedWithColor(rgba(0, 0, 0, 0), rgba(0, 0, 1, 0.5)), 0, 0, 1, 0.5);
    expectColor(
        C::colorBlendedWithColorCompositingFilter(red, rgba(1, 1, 1, 0.5), C::NormalBlendMode), 1,
        0.5, 0.5, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(red, rgba(1, 1, 1, 0.5), QString()), 1,
                0.5, 0.5, 1);

    const QColor warm = rgba(0.8, 0.4, 0.2);
    expectColor(
        C::colorBlendedWithColorCompositingFilter(warm, rgba(0.5, 0.5, 1, 0.5), C::Multiply), 0.6,
        0.3, 0.2, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(warm, rgba(0.5, 0.5, 1), C::Screen), 0.9,
                0.7, 1, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.25, 0.75, 0.5),
                                                          rgba(0.2, 0.2, 0.2), C::Overlay),
                0.1, 0.6, 0.2, 1);
    const QColor cool = rgba(0.3, 0.6, 0.9, 0.7);
    expectColor(C::colorBlendedWithColorCompositingFilter(cool, rgba(0.5, 0.5, 0.5), C::Darken),
                0.3, 0.5, 0.5, 0.7);
    expectColor(C::colorBlendedWithColorCompositingFilter(cool, rgba(0.5, 0.5, 0.5), C::Lighten),
                0.5, 0.6, 0.9, 0.7);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.3, 0.6, 0.2), rgba(0.5, 0.25, 1),
                                                          C::ColorDodge),
                0.6, 0.8, 1, 1);
    // Dodge does not clamp: 0.9 / (1 - 0.5).
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.9, 0.9, 0.9), rgba(0.5, 0.5, 0.5),
                                                          C::ColorDodge),
                1.8, 1.8, 1.8, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.6, 0.2, 0.5), rgba(0.7, 0.3, 0.1),
                                                          C::PlusLighter),
                1, 0.5, 0.6, 1);
}

TEST(FileTagColorsTest, BurnAndPlusDarkerUseTheBackdropsAlpha) {
    using C = FileTagColors;
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.8, 0.6, 0.5),
                                                          rgba(0.5, 0.8, 0, 0.5), C::ColorBurn),
                0.7, 0.55, 0.25, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(1, 1, 1, 0.5), rgba(0.5, 0.5, 0.5),
                                                          C::ColorBurn),
                0, 0, 0, 0.5);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.6, 0.4, 1), rgba(0.5, 0.2, 1, 0.5),
                                                          C::PlusDarker),
                0.35, 0, 1, 1);
    expectColor(C::colorBlendedWithColorCompositingFilter(rgba(0.6, 0.4, 1, 0), rgba(0.5, 0.2, 1),
                                                          C::PlusDarker),
                0, 0, 0, 0);
}

TEST(FileTagColorsTest, TransparentForegroundOrUnknownFilterKeepsTheBackdrop) {
    using C = FileTagColors;
    const QColor backdrop = rgba(0.2, 0.4, 0.6, 0.8);
    for (const QString& filter : {C::SourceOver, C::Multiply, C::ColorBurn, C::PlusDarker}) {
        EXPECT_EQ(C::colorBlendedWithColorCompositingFilter(backdrop, rgba(1, 0, 0, 0), filter),
                  backdrop);
    }
    EXPECT_EQ(C::colorBlendedWithColor(backdrop, QColor()), backdrop);
    EXPECT_EQ(C::colorBlendedWithColorCompositingFilter(backdrop, rgba(1, 0, 0), "hueBlendMode"),
              backdrop);
}

}  // namespace
}  // namespace vl::test
