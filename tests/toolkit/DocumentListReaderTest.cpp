#include "toolkit/DocumentListReader.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace vl;

namespace {

TEST(DocumentListReaderTest, NamesSortAsPeopleSortThem) {
    // Numbers by value wherever they stand, case ignored, a shorter name before its longer
    // continuation, and the same answer both ways round.
    const QStringList sorted{
        "1",   "2",    "10",     "a",       "A1",      "a01b",     "a2",           "a10",
        "abc", "abcd", "file12", "file123", "Photo 2", "photo 10", "Report 9.txt", "report 10.txt",
        "x1y", "x1z"};
    for (qsizetype i = 0; i + 1 < sorted.size(); ++i) {
        EXPECT_LT(DocumentListReader::compareNames(sorted.at(i), sorted.at(i + 1)), 0)
            << qPrintable(sorted.at(i)) << " before " << qPrintable(sorted.at(i + 1));
        EXPECT_GT(DocumentListReader::compareNames(sorted.at(i + 1), sorted.at(i)), 0)
            << qPrintable(sorted.at(i + 1)) << " after " << qPrintable(sorted.at(i));
    }
    EXPECT_EQ(DocumentListReader::compareNames(u"Scan 007", u"scan 7"), 0);
    EXPECT_EQ(DocumentListReader::compareNames(u"same", u"same"), 0);
    // A long shared start does not hide a difference inside a number that began before it.
    EXPECT_LT(DocumentListReader::compareNames(u"Scan 2024-05-9", u"Scan 2024-05-10"), 0);
    EXPECT_GT(DocumentListReader::compareNames(u"Take 19", u"Take 2"), 0);
}

}  // namespace
