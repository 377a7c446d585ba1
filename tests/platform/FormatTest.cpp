#include "platform/files/Error.h"
#include "platform/text/Format.h"

#include <gtest/gtest.h>

#include <QTimeZone>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace vl {
namespace {

template <typename T>
QString cPrintf(const std::string& directive, T value) {
    std::string buffer(std::size_t(std::snprintf(nullptr, 0, directive.c_str(), value)) + 1, '\0');
    std::snprintf(buffer.data(), buffer.size(), directive.c_str(), value);
    return QString::fromLatin1(buffer.c_str());
}

std::vector<std::string> directives(const std::vector<std::string>& conversions) {
    const char* flags[] = {"", "-", "+", " ", "#", "0", "-+", "+0", " 0", "#0", "-#", "+ "};
    const char* widths[] = {"", "1", "8", "24"};
    const char* precisions[] = {"", ".", ".0", ".3", ".12"};
    std::vector<std::string> out;
    for (const char* flag : flags) {
        for (const char* width : widths) {
            for (const char* precision : precisions) {
                for (const std::string& conversion : conversions) {
                    out.push_back(std::string("%") + flag + width + precision + conversion);
                }
            }
        }
    }
    return out;
}

TEST(FormatTest, IntegerConversionsMatchC) {
    const int ints[] = {0, 1, -1, 7, 42, -123456, INT_MIN, INT_MAX};
    for (const std::string& directive : directives({"d", "i", "u", "x", "X", "o"})) {
        for (int value : ints) {
            ASSERT_EQ(format(directive.c_str(), value), cPrintf(directive, value))
                << directive << " " << value;
        }
    }
    const long long longs[] = {0, -1, 1LL << 40, LLONG_MIN, LLONG_MAX};
    for (const std::string& directive : directives({"lld", "llu", "llx", "lX", "lo", "ld"})) {
        for (long long value : longs) {
            ASSERT_EQ(format(directive.c_str(), value), cPrintf(directive, value))
                << directive << " " << value;
        }
    }
    EXPECT_EQ(format("%lu", ULONG_MAX), cPrintf("%lu", ULONG_MAX));
    EXPECT_EQ(format("%hd|%hhd|%hx|%hhx|%hhu", 70000, 200, -1, 300, -1), "4464|-56|ffff|2c|255");
}

TEST(FormatTest, RealConversionsMatchC) {
    const double values[] = {0.0, -0.0,  1.5,    -2.25e-7, 12345.6789,
                             0.1, 1e300, 5e-324, HUGE_VAL, -HUGE_VAL};
    for (const std::string& directive : directives({"f", "F", "e", "E", "g", "G", "a", "lf"})) {
        for (double value : values) {
            ASSERT_EQ(format(directive.c_str(), value), cPrintf(directive, value))
                << directive << " " << value;
        }
    }
    EXPECT_EQ(format("%f", std::nan("")), cPrintf("%f", std::nan("")));
    EXPECT_EQ(format("%.2f", 2.5f), "2.50");
}

TEST(FormatTest, StarWidthAndPrecisionTakeIntArguments) {
    EXPECT_EQ(format("[%*d]", 6, 42), "[    42]");
    EXPECT_EQ(format("[%-*d]", 6, 42), "[42    ]");
    EXPECT_EQ(format("[%*d]", -6, 42), "[42    ]");
    EXPECT_EQ(format("[%.*f]", 2, 3.14159), "[3.14]");
    EXPECT_EQ(format("[%.*f]", -1, 3.5), "[3.500000]");
    EXPECT_EQ(format("[%*.*s]", 5, 2, "abcdef"), "[   ab]");
    EXPECT_EQ(format("[%1$*2$d]", 7, 4), "[   7]");
    EXPECT_EQ(format("[%*d]", 1 << 30, 1).size(), FormatMaxWidth + 2);
}

TEST(FormatTest, TextConversionsPadAndTruncate) {
    EXPECT_EQ(format("[%s]", "plain"), "[plain]");
    EXPECT_EQ(format("[%8s|%-8s]", "ab", QStringLiteral("cd")), "[      ab|cd      ]");
    EXPECT_EQ(format("[%.3s|%.2@]", "abcdef", QStringLiteral("xyz")), "[abc|xy]");
    EXPECT_EQ(format("[%5@]", 12), "[   12]");
    EXPECT_EQ(format("[%s]", static_cast<const char*>(nullptr)), "[(null)]");
    EXPECT_EQ(format("%s/%s", QByteArray("bytes"), std::string("std")), "bytes/std");
    EXPECT_EQ(format("%c%c%-3c|", 'o', 107, 'x'), "okx  |");
}

struct Described {
    QString description() const { return QStringLiteral("<Described>"); }
};

TEST(FormatTest, ObjectsPrintTheirDescription) {
    const QUrl file = QUrl::fromLocalFile(QStringLiteral("/tmp/Drive/Notes.txt"));
    EXPECT_EQ(format("Previewing %@", file), "Previewing file:///tmp/Drive/Notes.txt");
    EXPECT_EQ(format("%@", QUrl()), "(null)");
    for (const QString& url : {QStringLiteral("/a b/c%d/#?x/é.txt"), QStringLiteral("/"),
                               QStringLiteral("/x;y=1"), QStringLiteral("/q\"<>^{|}\\[]`'.txt")}) {
        EXPECT_EQ(format("%@", QUrl::fromLocalFile(url)), QUrl::fromLocalFile(url).toString());
    }
    for (const char* url : {"file://server/share/a", "https://h/p?q=1#f", "file:///a?b", "x:y"}) {
        EXPECT_EQ(format("%@", QUrl(QString::fromLatin1(url))), QString::fromLatin1(url));
    }
    const QDateTime date(QDate(2015, 10, 23), QTime(20, 29, 47), QTimeZone(7200));
    EXPECT_EQ(format("%@", date), "2015-10-23 18:29:47 +0000");
    EXPECT_EQ(format("%@", QDateTime()), "(null)");
    EXPECT_EQ(format("%@|%@|%@|%@", 42, -1.5, true, false), "42|-1.5|1|0");
    EXPECT_EQ(format("%d %d", true, false), "1 0");
    EXPECT_EQ(format("%@|%s|%@", nullptr, nullptr, QVariant()), "(null)|(null)|(null)");

    Described object;
    const Described* none = nullptr;
    const auto shared = std::make_shared<Described>();
    EXPECT_EQ(format("%@ %@ %@ %@", object, &object, none, shared),
              "<Described> <Described> (null) <Described>");
    EXPECT_EQ(format("%@ %@", std::optional<int>(5), std::optional<QString>()), "5 (null)");

    const Error error(QStringLiteral("Domain"), 7,
                      {{Error::LocalizedDescriptionKey, QStringLiteral("Broken")}});
    EXPECT_EQ(format("Move failed: %@", error),
              "Move failed: Error Domain=Domain Code=7 \"Broken\"");
}

TEST(FormatTest, CollectionsPrintAsArraysAndDictionaries) {
    EXPECT_EQ(format("%@", QStringList{QStringLiteral("a"), QStringLiteral("b c")}),
              "(\n    a,\n    \"b c\"\n)");
    EXPECT_EQ(format("%@", QVariantList{}), "(\n)");
    const QVariantList nested{1, QVariantList{QStringLiteral("x")},
                              QUrl(QStringLiteral("file:///a"))};
    EXPECT_EQ(format("%@", nested), "(\n    1,\n    (\n        x\n    ),\n    file:///a\n)");
    const QVariantMap map{{QStringLiteral("Count"), 2},
                          {QStringLiteral("Name"), QStringLiteral("My File")},
                          {QStringLiteral("Tags"), QVariantMap{{QStringLiteral("k"), true}}}};
    EXPECT_EQ(
        format("%@", map),
        "{\n    Count = 2;\n    Name = \"My File\";\n    Tags = {\n        k = 1;\n    };\n}");
    EXPECT_EQ(format("%@", QVariant(map)), format("%@", map));

    const QList<QUrl> urls{QUrl(QStringLiteral("file:///a")), QUrl(QStringLiteral("file:///b"))};
    EXPECT_EQ(format("ItemsToMove = %@", urls),
              "ItemsToMove = (\n    file:///a,\n    file:///b\n)");
    EXPECT_EQ(format("%@", QVariant::fromValue(urls)), format("%@", urls));
    const std::vector<QStringList> lists{{QStringLiteral("x y")}, {}};
    EXPECT_EQ(format("%@", lists), "(\n    (\n        \"x y\"\n    ),\n    (\n    )\n)");
}

TEST(FormatTest, VariantsFormatAsTheirContent) {
    EXPECT_EQ(format("%05d|%.1f|%x", QVariant(42), QVariant(2.25), QVariant(255u)), "00042|2.2|ff");
    EXPECT_EQ(format("%@ %s", QVariant(QStringLiteral("text")), QVariant(QByteArray("raw"))),
              "text raw");
}

TEST(FormatTest, MismatchedArgumentsAreShownSensibly) {
    EXPECT_EQ(format("%d|%i", 3.9, -2.5), "3|-2");
    EXPECT_EQ(format("%f|%.1e", 2, 10u), "2.000000|1.0e+01");
    EXPECT_EQ(format("%s|%@", 42, 7u), "42|7");
    EXPECT_EQ(format("%d items", QStringLiteral("many")), "many items");
    EXPECT_EQ(format("%x|%x", -1, std::int64_t(-1)), "ffffffff|ffffffffffffffff");
    EXPECT_EQ(format("%d", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(format("%u", std::int16_t(-1)), "4294967295");
    EXPECT_EQ(format("%d", std::nan("")), "0");
    EXPECT_EQ(format("%lu", 1e30), "9223372036854775807");
}

TEST(FormatTest, PositionalArgumentsReorder) {
    EXPECT_EQ(format("%2$@ available", QStringLiteral("ignored"), QStringLiteral("12 GB")),
              "12 GB available");
    EXPECT_EQ(format("%2$@ of %1$@", 1, 2), "2 of 1");
    EXPECT_EQ(format(QStringLiteral("%2$s, %1$d, %2$s"), 5, "x"), "x, 5, x");
    EXPECT_EQ(format("%3$@", 1, 2), "%3$@");
    EXPECT_EQ(format("%0$d", 1), "%0$d");
}

TEST(FormatTest, MalformedFormatsPrintTheirOwnText) {
    EXPECT_EQ(format("100%"), "100%");
    EXPECT_EQ(format("100%%"), "100%");
    EXPECT_EQ(format("Progress %@%%: %@", 50, "a"), "Progress 50%: a");
    EXPECT_EQ(format("%q %d", 1), "%q 1");
    EXPECT_EQ(format("%5", 1), "%5");
    EXPECT_EQ(format("%-08.3", 1), "%-08.3");
    EXPECT_EQ(format("%d and %d", 1), "1 and %d");
    EXPECT_EQ(format("%*d", 4), "%*d");
    EXPECT_EQ(format("%*d", "x", 4), "%*d");
    EXPECT_EQ(format("%d", 1, 2, 3), "1");
    EXPECT_EQ(format(static_cast<const char*>(nullptr), 1), "");
    EXPECT_EQ(format("%999999999d", 1).size(), FormatMaxWidth);
    EXPECT_EQ(format("%.999999999f", 1.0).size(), FormatMaxWidth + 2);
    EXPECT_EQ(format("%99999999999999999999s", "x").size(), FormatMaxWidth);
}

TEST(FormatTest, Utf8InFormatsAndArguments) {
    EXPECT_EQ(format("Öffne „%@“ – %d€", QStringLiteral("Bär 😀"), 3),
              QStringLiteral("Öffne „Bär 😀“ – 3€"));
    EXPECT_EQ(format("[%s]", "na\xc3\xafve"), QStringLiteral("[naïve]"));
    EXPECT_EQ(format(QStringLiteral("The name “%1$@” with extension “.%2$@” is already taken."),
                     QStringLiteral("Report"), QStringLiteral("pdf")),
              QStringLiteral("The name “Report” with extension “.pdf” is already taken."));
    // A cut never splits a surrogate pair; width counts UTF-16 units.
    EXPECT_EQ(format("[%.1s]", QStringLiteral("😀x")), "[]");
    EXPECT_EQ(format("[%4@]", QStringLiteral("é")), QStringLiteral("[   é]"));
    EXPECT_EQ(format("%c", 0x1F600), QStringLiteral("😀"));
    EXPECT_EQ(format("[%c]", 0xD800), QStringLiteral("[\uFFFD]"));
    EXPECT_EQ(format("50%€ %s", "x"), QStringLiteral("50%€ x"));
}

TEST(FormatTest, BothFormatOverloadsAgree) {
    const char* formats[] = {"%d items in %@", "%-5s|%+.3e|%#x", "%2$@ %1$@ %%", "%@: %@ vs %@"};
    for (const char* fmt : formats) {
        EXPECT_EQ(format(fmt, 3, QStringLiteral("two"), 1.5, "four"),
                  format(QString::fromUtf8(fmt), 3, QStringLiteral("two"), 1.5, "four"))
            << fmt;
    }
}

TEST(FormatTest, LongOutputs) {
    const QString big(100000, QLatin1Char('z'));
    const QString out = format("<%@>%s<%@>", big, "mid", big);
    EXPECT_EQ(out.size(), 2 * big.size() + 7);
    EXPECT_TRUE(out.startsWith(QLatin1String("<zzz")));
    EXPECT_TRUE(out.endsWith(QLatin1String("zzz>")));
    EXPECT_EQ(format("%.4096f", 1e300), cPrintf("%.4096f", 1e300));
    EXPECT_EQ(format("%4096d", -7), cPrintf("%4096d", -7));
}

}  // namespace
}  // namespace vl
