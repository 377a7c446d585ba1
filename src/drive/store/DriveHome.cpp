#include "drive/store/DriveHome.h"

#include <QDir>
#include <QStandardPaths>

namespace vl {

namespace {

const QString kPlaceholderPrefix = QStringLiteral(".");

}  // namespace

QString DriveHome::defaultPath() {
    const QByteArray override = qgetenv("VELLORA_HOME");
    if (!override.isEmpty()) {
        return QDir::cleanPath(QString::fromLocal8Bit(override));
    }
    QString dataHome = QString::fromLocal8Bit(qgetenv("XDG_DATA_HOME"));
    if (dataHome.isEmpty() || !QDir::isAbsolutePath(dataHome)) {
        dataHome = QDir::homePath() + QStringLiteral("/.local/share");
    }
    return QDir::cleanPath(dataHome + QStringLiteral("/vellora"));
}

DriveHome::DriveHome(const QString& rootPath)
    : root_(QDir::cleanPath(QDir(rootPath).absolutePath())),
      cloud_(root_ + QStringLiteral("/cloud")),
      drive_(root_ + QStringLiteral("/drive")) {}

QString DriveHome::accountFile() const {
    return root_ + QStringLiteral("/account.json");
}

QString DriveHome::serviceFile() const {
    return root_ + QStringLiteral("/service.json");
}

QString DriveHome::keyValueStoreFile() const {
    return root_ + QStringLiteral("/kvstore.json");
}

QString DriveHome::metadataFile() const {
    return root_ + QStringLiteral("/metadata.json");
}

QString DriveHome::containersDir() const {
    return root_ + QStringLiteral("/containers");
}

QString DriveHome::containerRecordFile(const QString& identifier) const {
    return containersDir() + QLatin1Char('/') + identifier + QStringLiteral(".json");
}

QString DriveHome::stagingDir() const {
    return root_ + QStringLiteral("/staging");
}

bool DriveHome::ensureLayout() const {
    QDir dir;
    return dir.mkpath(containersDir()) && dir.mkpath(cloudDir()) && dir.mkpath(driveDir()) &&
           dir.mkpath(stagingDir());
}

std::optional<QString> DriveHome::driveRelativePath(const QString& absolutePath) const {
    const QString& drive = drive_;
    if (absolutePath == drive) {
        return QString();
    }
    if (absolutePath.size() > drive.size() + 1 && absolutePath.startsWith(drive) &&
        absolutePath.at(drive.size()) == QLatin1Char('/')) {
        QString relative = absolutePath.mid(drive.size() + 1);
        while (relative.endsWith(QLatin1Char('/'))) {
            relative.chop(1);
        }
        return relative;
    }
    return std::nullopt;
}

QString DriveHome::drivePathFor(const QString& driveRelativePath) const {
    return driveRelativePath.isEmpty() ? driveDir()
                                       : driveDir() + QLatin1Char('/') + driveRelativePath;
}

QString DriveHome::cloudPathFor(const QString& driveRelativePath) const {
    return driveRelativePath.isEmpty() ? cloudDir()
                                       : cloudDir() + QLatin1Char('/') + driveRelativePath;
}

QString DriveHome::placeholderFileName(const QString& name) {
    return kPlaceholderPrefix + name + PlaceholderSuffix;
}

bool DriveHome::canBeCloudOnly(const QString& name) {
    return name.toUtf8().size() <= MaxCloudOnlyNameBytes;
}

std::optional<QString> DriveHome::logicalNameOfPlaceholder(const QString& fileName) {
    if (!isPlaceholderFileName(fileName)) {
        return std::nullopt;
    }
    return fileName.mid(1, fileName.size() - 1 - PlaceholderSuffix.size());
}

bool DriveHome::isPlaceholderFileName(QStringView fileName) {
    return fileName.size() > 1 + PlaceholderSuffix.size() &&
           fileName.startsWith(kPlaceholderPrefix) && fileName.endsWith(PlaceholderSuffix);
}

bool DriveHome::isReservedName(const QString& fileName) {
    return isPlaceholderFileName(fileName);
}

QString DriveHome::placeholderPathFor(const QString& logicalPath) {
    const qsizetype slash = logicalPath.lastIndexOf(QLatin1Char('/'));
    return logicalPath.left(slash + 1) + placeholderFileName(logicalPath.mid(slash + 1));
}

QString DriveHome::downloadPathFor(const QString& logicalPath) {
    const qsizetype slash = logicalPath.lastIndexOf(QLatin1Char('/'));
    return logicalPath.left(slash + 1) + kPlaceholderPrefix + logicalPath.mid(slash + 1) +
           QStringLiteral(".vldownload");
}

}  // namespace vl
