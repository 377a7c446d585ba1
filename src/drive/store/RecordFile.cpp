#include "drive/store/RecordFile.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QSaveFile>

#include <cerrno>

namespace vl {

namespace {

constexpr int kCorruptFile = 259;
constexpr int kWriteUnknown = 512;

}  // namespace

std::optional<QJsonObject> RecordFile::readObject(const QString& path, Error* error,
                                                  bool* missing) {
    if (missing) {
        *missing = false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        const bool exists = file.exists();
        if (missing) {
            *missing = !exists;
        }
        if (error) {
            *error = exists ? Error::posixError(EACCES, path)
                            : Error::fileError(Error::FileReadNoSuchFile, path);
        }
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        if (error) {
            *error = corruptFileError(path, parseError.error != QJsonParseError::NoError
                                                ? parseError.errorString()
                                                : QStringLiteral("not a JSON object"));
        }
        return std::nullopt;
    }
    return document.object();
}

std::optional<Error> RecordFile::writeObject(const QString& path, const QJsonObject& object) {
    return writeBytes(path, QJsonDocument(object).toJson(QJsonDocument::Indented));
}

std::optional<Error> RecordFile::writeBytes(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return Error(
            Error::FileErrorDomain, kWriteUnknown,
            {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, file.errorString()}});
    }
    file.write(bytes);
    if (!file.commit()) {
        return Error(
            Error::FileErrorDomain, kWriteUnknown,
            {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, file.errorString()}});
    }
    return std::nullopt;
}

Error RecordFile::corruptFileError(const QString& path, const QString& reason) {
    return Error(Error::FileErrorDomain, kCorruptFile,
                 {{Error::FilePathKey, path}, {Error::LocalizedFailureReasonKey, reason}});
}

}  // namespace vl
