#pragma once

#include <QString>
#include <QVariantMap>

namespace vl {

// The error value of every fallible operation: a domain, an integer code, an optional information
// map, and the texts shown to the user. Operations return std::optional<Error> (nothing on
// success) or pass one to a completion; nothing throws.
class Error {
public:
    // The general file-error domain and its codes.
    static inline const QString FileErrorDomain = QStringLiteral("VLFileErrorDomain");
    static constexpr int FileNoSuchFile = 4;
    static constexpr int FileReadNoSuchFile = 260;
    static constexpr int FileWriteInvalidFileName = 514;
    static constexpr int FileWriteFileExists = 516;
    static constexpr int UserCancelled = 3072;
    static constexpr int FeatureUnsupported = 3328;
    static constexpr int CloudServerUnavailable = 4355;

    // The domain of errors made from errno values; their text is the C library's.
    static inline const QString POSIXErrorDomain = QStringLiteral("VLPOSIXErrorDomain");

    // Information-map keys.
    static inline const QString LocalizedDescriptionKey = QStringLiteral("LocalizedDescription");
    static inline const QString LocalizedFailureReasonKey =
        QStringLiteral("LocalizedFailureReason");
    static inline const QString FilePathKey = QStringLiteral("FilePath");
    static inline const QString UnderlyingErrorKey = QStringLiteral("UnderlyingError");

    Error() = default;
    Error(QString domain, int code, QVariantMap userInfo = {});
    static Error fileError(int code, const QString& path = {});
    // An error of the POSIX domain from an errno value, with the path it concerns.
    static Error posixError(int errnoValue, const QString& path = {});

    const QString& domain() const { return domain_; }
    int code() const { return code_; }
    const QVariantMap& userInfo() const { return userInfo_; }

    // The text shown to the user: the information map's description when present, else the
    // string table's text for the domain and code.
    QString localizedDescription() const;
    QString localizedFailureReason() const;
    // "Error Domain=%@ Code=%d \"%@\"", as it appears in log lines.
    QString description() const;

    bool operator==(const Error& other) const {
        return domain_ == other.domain_ && code_ == other.code_;
    }

private:
    QString domain_;
    int code_ = 0;
    QVariantMap userInfo_;
};

}  // namespace vl

Q_DECLARE_METATYPE(vl::Error)
