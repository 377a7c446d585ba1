#include "fileops/FileUtils.h"

#include <QChar>
#include <QStringList>

#include <gtest/gtest.h>

namespace vl {
namespace {

// What the name rule says of one character after an ordinary one, from Qt's own Unicode tables:
// a second source of the same history (a code point assigned by 3.2 stays assigned).
bool acceptedByQtTables(char32_t c) {
    if (c == '/' || c == ':' || (c >= 0xD800 && c <= 0xDFFF) || QChar::isNonCharacter(c)) {
        return false;
    }
    const QChar::UnicodeVersion version = QChar::unicodeVersion(c);
    if (version == QChar::Unicode_Unassigned || version > QChar::Unicode_3_2) {
        return false;
    }
    const QChar::Category category = QChar::category(c);
    if (category == QChar::Other_Control || category == QChar::Other_Format) {
        return false;
    }
    return !(c == 0x2028 || c == 0x2029 || c == 0x85 || (c >= 0x0A && c <= 0x0D));
}

TEST(FileUtilsFilenameTest, EveryCodePointAfterALetterAgreesWithTheUnicodeData) {
    QStringList disagreements;
    int accepted = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        QString name = QStringLiteral("a");
        if (QChar::requiresSurrogates(c)) {
            name += QChar(QChar::highSurrogate(c));
            name += QChar(QChar::lowSurrogate(c));
        } else {
            name += QChar(char16_t(c));
        }
        const bool valid = FileUtils::isValidFilename(name);
        accepted += valid;
        if (valid != acceptedByQtTables(c) && disagreements.size() < 10) {
            disagreements << QStringLiteral("U+%1").arg(uint(c), 4, 16, QLatin1Char('0'));
        }
    }
    EXPECT_TRUE(disagreements.isEmpty()) << disagreements.join(u' ').toStdString();
    // Unicode 3.2's 95,156 characters and 137,468 private-use code points, less a few hundred
    // controls, formats and breaks: two sources that both lost their data would still agree.
    EXPECT_GT(accepted, 232000);
    EXPECT_LT(accepted, 232624);
}

TEST(FileUtilsFilenameTest, NamesAreRefusedByTheFirstTestTheyFail) {
    EXPECT_FALSE(FileUtils::isValidFilename(QString()));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral(".x")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("a/b")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("a:b")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("line\nbreak")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("tab\there")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("zero\u200Bwidth")));  // Cf
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("para\u2029graph")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("non\uFDD0char")));
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("late \u0221")));  // Unicode 4.0
    EXPECT_FALSE(FileUtils::isValidFilename(QStringLiteral("smile \U0001F600")));
    QString lone = QStringLiteral("half ");
    lone += QChar(char16_t(0xD83D));
    EXPECT_FALSE(FileUtils::isValidFilename(lone));

    EXPECT_TRUE(FileUtils::isValidFilename(QStringLiteral("Report 2024.odt")));
    EXPECT_TRUE(FileUtils::isValidFilename(QStringLiteral("a.")));
    EXPECT_TRUE(FileUtils::isValidFilename(QStringLiteral("Grüße, 東京 & Co")));
    EXPECT_TRUE(FileUtils::isValidFilename(QStringLiteral("\U00020000 ext-B")));  // Unicode 3.1
    EXPECT_TRUE(FileUtils::isValidFilename(QString(1000, QLatin1Char('n')))) << "no length limit";
}

TEST(FileUtilsFilenameTest, TrimmingTakesBlanksAndBreaksAroundTheNameOnly) {
    EXPECT_EQ(FileUtils::trimmedFilename(QStringLiteral("  Report  ")), QStringLiteral("Report"));
    EXPECT_EQ(FileUtils::trimmedFilename(QStringLiteral("\u3000\n My  Trip \r\u2028\u0085")),
              QStringLiteral("My  Trip"));
    EXPECT_EQ(FileUtils::trimmedFilename(QStringLiteral("\tTabbed")), QStringLiteral("\tTabbed"))
        << "a tab is not white space here, and the rule then refuses it";
    EXPECT_EQ(FileUtils::trimmedFilename(QStringLiteral("   ")), QStringLiteral(""));
}

}  // namespace
}  // namespace vl
