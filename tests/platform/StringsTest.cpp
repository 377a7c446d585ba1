#include "platform/text/Strings.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QXmlStreamReader>

#include <thread>
#include <vector>

namespace {

using vl::Strings::localized;
using vl::Strings::localizedPlural;

// One message of the English source table: its id and its text, or its plural forms.
struct TableEntry {
    QString id;
    QStringList forms;  // one text for a plain key, one per numerus form for a plural key
    bool plural = false;
};

// From the source tree's path the build gives, not __FILE__, which a compiler cache may make
// relative to the build.
QString sourceTablePath() {
    return QStringLiteral(VELLORA_SOURCE_DIR "/resources/translations/vellora_en.ts");
}

std::vector<TableEntry> readSourceTable() {
    QFile file(sourceTablePath());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    std::vector<TableEntry> entries;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement()) {
            continue;
        }
        if (xml.name() == u"message") {
            TableEntry entry;
            entry.id = xml.attributes().value(QLatin1String("id")).toString();
            entry.plural = xml.attributes().value(QLatin1String("numerus")) == u"yes";
            entries.push_back(entry);
        } else if (xml.name() == u"numerusform") {
            entries.back().forms << xml.readElementText();
        } else if (xml.name() == u"translation" && !entries.back().plural) {
            entries.back().forms << xml.readElementText();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return entries;
}

TEST(StringsTest, EnglishTableIsEmbeddedInTheLibrary) {
    vl::Strings::install();
    EXPECT_TRUE(QFile::exists(QStringLiteral(":/i18n/vellora_en.qm")));
    // Installed into the application as well, so a plain qtTrId finds the texts.
    EXPECT_EQ(qtTrId("Delete from Vellora"), QStringLiteral("Delete from Vellora"));
}

TEST(StringsTest, PlainKeysGiveTheirTextAndMissingKeysGiveTheKey) {
    EXPECT_EQ(localized("Select Items"), QStringLiteral("Select Items"));
    EXPECT_EQ(localized("Character not allowed in filename"),
              QStringLiteral("This name contains a character that isn’t allowed."));
    EXPECT_EQ(localized("No Such Key …"), QStringLiteral("No Such Key …"));
    EXPECT_EQ(localized(QString()), QString());
    EXPECT_EQ(localizedPlural(QStringLiteral(".DICT.NO_SUCH_KEY.%d"), 3),
              QStringLiteral(".DICT.NO_SUCH_KEY.%d"));
}

TEST(StringsTest, KeysWithTypographicCharactersMatchExactly) {
    EXPECT_EQ(localized("Loading…"), QStringLiteral("Loading…"));
    EXPECT_EQ(localized(QStringLiteral("Open in “%@”")), QStringLiteral("Open in “%@”"));
    EXPECT_EQ(localized("The name “%@” can’t be used. Try using a name with fewer characters, "
                        "or with no punctuation marks."),
              QStringLiteral("The name “%@” can’t be used. Try using a name with fewer "
                             "characters, or with no punctuation marks."));
    // The straight quotation marks of this key are part of the text shown.
    EXPECT_EQ(localized("\"%@\" will be permanently deleted from Vellora on all your devices. "
                        "This action cannot be undone."),
              QStringLiteral("\"%@\" will be permanently deleted from Vellora on all your "
                             "devices. This action cannot be undone."));
    // Three full stops are not the ellipsis character.
    EXPECT_EQ(localized("Loading..."), QStringLiteral("Loading..."));
}

TEST(StringsTest, PluralKeysChooseTheFormByTheCount) {
    const QString items = QStringLiteral(".DICT.ITEMS.%d");
    EXPECT_EQ(localizedPlural(items, 0), QStringLiteral("%d items"));
    EXPECT_EQ(localizedPlural(items, 1), QStringLiteral("%d item"));
    EXPECT_EQ(localizedPlural(items, 2), QStringLiteral("%d items"));
    EXPECT_EQ(localizedPlural(items, 12), QStringLiteral("%d items"));
    EXPECT_EQ(localizedPlural(items, 1.5), QStringLiteral("%d items"));
    EXPECT_EQ(localizedPlural(items, 5e12), QStringLiteral("%d items"));

    EXPECT_EQ(localizedPlural(QStringLiteral(".DICT.ITEMS_SELECTED.%d"), 1),
              QStringLiteral("%d Item Selected"));
    EXPECT_EQ(localizedPlural(QStringLiteral(".DICT.CANNOT_DELETE_ITEMS.%d"), 2),
              QStringLiteral("%d items couldn’t be deleted."));
    EXPECT_EQ(localizedPlural(QStringLiteral(".DICT.AVAILABLE.%g"), 1),
              QStringLiteral("%2$@ available"));
}

TEST(StringsTest, EveryKeyOfTheSourceTableIsInTheCompiledTable) {
    const std::vector<TableEntry> entries = readSourceTable();
    ASSERT_GT(entries.size(), 50u);
    for (const TableEntry& entry : entries) {
        SCOPED_TRACE(entry.id.toStdString());
        // Plural keys are the ones that begin with ".DICT.", and only those.
        EXPECT_EQ(entry.plural, entry.id.startsWith(QStringLiteral(".DICT.")));
        if (entry.plural) {
            ASSERT_EQ(entry.forms.size(), 2);  // English: one, other
            EXPECT_EQ(localizedPlural(entry.id, 1), entry.forms[0]);
            EXPECT_EQ(localizedPlural(entry.id, 7), entry.forms[1]);
        } else {
            ASSERT_EQ(entry.forms.size(), 1);
            EXPECT_EQ(localized(entry.id), entry.forms[0]);
        }
        EXPECT_FALSE(entry.forms.contains(QString()));
    }
}

TEST(StringsTest, LookupsFromManyThreadsAgree) {
    const std::vector<TableEntry> entries = readSourceTable();
    std::vector<int> mismatches(4, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&entries, &mismatches, t] {
            for (const TableEntry& entry : entries) {
                const QString text =
                    entry.plural ? localizedPlural(entry.id, 3) : localized(entry.id);
                if (text != entry.forms.back()) {
                    ++mismatches[t];
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

}  // namespace
