#include "platform/files/Error.h"

#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QFileInfo>

#include <cstring>
#include <utility>

namespace vl {

namespace {

// strerror_r comes in two flavours (GNU returns the text, XSI fills the buffer); both are
// accepted so that the build does not depend on which one the C library declares.
[[maybe_unused]] const char* strerrorResult(int result, const char* buffer) {
    return result == 0 ? buffer : nullptr;
}
[[maybe_unused]] const char* strerrorResult(const char* result, const char*) {
    return result;
}

QString posixText(int errnoValue) {
    char buffer[256] = {};
    const char* text = strerrorResult(strerror_r(errnoValue, buffer, sizeof buffer), buffer);
    if (!text || !*text) {
        return format("Unknown error %d", errnoValue);
    }
    return QString::fromLocal8Bit(text);
}

// The string-table keys of the file-error domain: the first names the file (its text takes the
// file's name as "%@"), the second is used when the error carries no path.
struct FileErrorKeys {
    const char* named;
    const char* unnamed;
};

const FileErrorKeys* fileErrorKeys(int code) {
    static const FileErrorKeys noSuchFile{"ERROR_FILE_NO_SUCH_FILE",
                                          "ERROR_FILE_NO_SUCH_FILE_UNNAMED"};
    static const FileErrorKeys invalidName{"ERROR_FILE_INVALID_NAME",
                                           "ERROR_FILE_INVALID_NAME_UNNAMED"};
    static const FileErrorKeys exists{"ERROR_FILE_EXISTS", "ERROR_FILE_EXISTS_UNNAMED"};
    static const FileErrorKeys cancelled{"ERROR_USER_CANCELLED", "ERROR_USER_CANCELLED"};
    static const FileErrorKeys unsupported{"ERROR_FEATURE_UNSUPPORTED",
                                           "ERROR_FEATURE_UNSUPPORTED"};
    static const FileErrorKeys serverUnavailable{"ERROR_CLOUD_SERVER_UNAVAILABLE",
                                                 "ERROR_CLOUD_SERVER_UNAVAILABLE"};
    switch (code) {
        case Error::FileNoSuchFile:
        case Error::FileReadNoSuchFile:
            return &noSuchFile;
        case Error::FileWriteInvalidFileName:
            return &invalidName;
        case Error::FileWriteFileExists:
            return &exists;
        case Error::UserCancelled:
            return &cancelled;
        case Error::FeatureUnsupported:
            return &unsupported;
        case Error::CloudServerUnavailable:
            return &serverUnavailable;
        default:
            return nullptr;
    }
}

}  // namespace

Error::Error(QString domain, int code, QVariantMap userInfo)
    : domain_(std::move(domain)), code_(code), userInfo_(std::move(userInfo)) {}

Error Error::fileError(int code, const QString& path) {
    QVariantMap info;
    if (!path.isEmpty()) {
        info.insert(FilePathKey, path);
    }
    return Error(FileErrorDomain, code, std::move(info));
}

Error Error::posixError(int errnoValue, const QString& path) {
    QVariantMap info;
    if (!path.isEmpty()) {
        info.insert(FilePathKey, path);
    }
    return Error(POSIXErrorDomain, errnoValue, std::move(info));
}

QString Error::localizedDescription() const {
    const QVariant given = userInfo_.value(LocalizedDescriptionKey);
    if (given.isValid()) {
        return given.toString();
    }
    if (domain_ == POSIXErrorDomain) {
        return posixText(code_);
    }
    if (domain_ == FileErrorDomain) {
        if (const FileErrorKeys* keys = fileErrorKeys(code_)) {
            const QString path = userInfo_.value(FilePathKey).toString();
            if (path.isEmpty()) {
                return Strings::localized(keys->unnamed);
            }
            const QString name = QFileInfo(path).fileName();
            return format(Strings::localized(keys->named), name.isEmpty() ? path : name);
        }
    }
    return format(Strings::localized("ERROR_GENERIC"), domain_, code_);
}

QString Error::localizedFailureReason() const {
    const QVariant given = userInfo_.value(LocalizedFailureReasonKey);
    if (given.isValid()) {
        return given.toString();
    }
    const QVariant underlying = userInfo_.value(UnderlyingErrorKey);
    if (underlying.metaType() == QMetaType::fromType<Error>()) {
        return underlying.value<Error>().localizedDescription();
    }
    if (domain_ == POSIXErrorDomain) {
        return posixText(code_);
    }
    return {};
}

QString Error::description() const {
    QString text = format("Error Domain=%@ Code=%d \"%@\"", domain_, code_, localizedDescription());
    QString details;
    for (auto it = userInfo_.cbegin(); it != userInfo_.cend(); ++it) {
        if (it.key() == LocalizedDescriptionKey) {
            continue;
        }
        if (!details.isEmpty()) {
            details.append(QLatin1String(", "));
        }
        details.append(format("%@=%@", it.key(), it.value()));
    }
    if (!details.isEmpty()) {
        text.append(format(" UserInfo={%@}", details));
    }
    return text;
}

}  // namespace vl
