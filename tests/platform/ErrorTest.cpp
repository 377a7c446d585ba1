#include "platform/files/Error.h"
#include "platform/text/Format.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace vl {
namespace {

TEST(ErrorTest, PosixErrorsCarryTheCLibraryText) {
    const Error error = Error::posixError(ENOENT, QStringLiteral("/tmp/gone"));
    EXPECT_EQ(error.domain(), QStringLiteral("VLPOSIXErrorDomain"));
    EXPECT_EQ(error.code(), ENOENT);
    EXPECT_EQ(error.localizedDescription(), QString::fromLocal8Bit(std::strerror(ENOENT)));
    EXPECT_EQ(error.description(),
              format("Error Domain=VLPOSIXErrorDomain Code=%d \"%s\" UserInfo={FilePath=/tmp/gone}",
                     ENOENT, std::strerror(ENOENT)));
}

TEST(ErrorTest, GivenTextsWinOverTheTables) {
    const Error given(Error::FileErrorDomain, Error::FileWriteFileExists,
                      {{Error::LocalizedDescriptionKey, QStringLiteral("Already there")},
                       {Error::LocalizedFailureReasonKey, QStringLiteral("Same name")}});
    EXPECT_EQ(given.localizedDescription(), "Already there");
    EXPECT_EQ(given.localizedFailureReason(), "Same name");
    // The description's own text is not repeated in the UserInfo part.
    EXPECT_EQ(given.description(),
              "Error Domain=VLFileErrorDomain Code=516 \"Already there\" "
              "UserInfo={LocalizedFailureReason=Same name}");
}

TEST(ErrorTest, UnderlyingErrorGivesTheFailureReason) {
    const Error posix = Error::posixError(EACCES);
    const Error wrapped(QStringLiteral("Outer"), 1,
                        {{Error::LocalizedDescriptionKey, QStringLiteral("Could not save")},
                         {Error::UnderlyingErrorKey, QVariant::fromValue(posix)}});
    EXPECT_EQ(wrapped.localizedFailureReason(), posix.localizedDescription());
    EXPECT_EQ(wrapped.description(),
              "Error Domain=Outer Code=1 \"Could not save\" UserInfo={UnderlyingError=" +
                  posix.description() + "}");
}

TEST(ErrorTest, FileErrorsNameTheFileNotItsFolder) {
    const QString path = QStringLiteral("/drive/Reports/Budget 2015.numbers");
    for (int code : {Error::FileNoSuchFile, Error::FileReadNoSuchFile,
                     Error::FileWriteInvalidFileName, Error::FileWriteFileExists}) {
        const Error named = Error::fileError(code, path);
        const Error unnamed = Error::fileError(code);
        EXPECT_EQ(named.userInfo().value(Error::FilePathKey).toString(), path);
        EXPECT_TRUE(unnamed.userInfo().isEmpty());
        EXPECT_NE(named.localizedDescription(), unnamed.localizedDescription()) << code;
        EXPECT_TRUE(named.localizedDescription().contains(QStringLiteral("“Budget 2015.numbers”")))
            << named.localizedDescription().toStdString();
        EXPECT_FALSE(named.localizedDescription().contains(QLatin1String("/drive/Reports")));
        EXPECT_FALSE(named.localizedDescription().isEmpty());
    }
    EXPECT_NE(Error::fileError(Error::UserCancelled).localizedDescription(),
              Error::fileError(Error::CloudServerUnavailable).localizedDescription());
}

}  // namespace
}  // namespace vl
