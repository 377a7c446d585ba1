#include "platform/app/RestorationArchive.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>
#include <QStandardPaths>

namespace vl {

namespace {

const QString kVersionKey = QStringLiteral("version");
const QString kControllersKey = QStringLiteral("controllers");
constexpr int kVersion = 1;
// Far more than any state the app saves; a larger file is not ours.
constexpr qint64 kMaximumSize = 1 << 20;

}  // namespace

QString RestorationArchive::defaultPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/com.tessaly.VelloraApp/RestorationArchive.json");
}

std::map<QString, StateCoder> RestorationArchive::read(QString* problem) const {
    const auto fail = [problem](const QString& why) {
        if (problem) {
            *problem = why;
        }
        return std::map<QString, StateCoder>();
    };
    QFile file(path_);
    if (!file.exists()) {
        return {};
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return fail(file.errorString());
    }
    if (file.size() > kMaximumSize) {
        return fail(QStringLiteral("larger than %1 bytes").arg(kMaximumSize));
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        return fail(error.errorString());
    }
    if (!document.isObject() || document.object().value(kVersionKey).toInt() != kVersion) {
        return fail(QStringLiteral("not an archive of version %1").arg(kVersion));
    }
    std::map<QString, StateCoder> coders;
    const QJsonObject controllers = document.object().value(kControllersKey).toObject();
    for (auto it = controllers.begin(); it != controllers.end(); ++it) {
        if (it.value().isObject()) {
            coders.emplace(it.key(), StateCoder(it.value().toObject()));
        }
    }
    return coders;
}

std::optional<QString> RestorationArchive::write(
    const std::map<QString, StateCoder>& coders) const {
    QJsonObject controllers;
    for (const auto& [identifier, coder] : coders) {
        controllers.insert(identifier, coder.values());
    }
    const QJsonObject root{{kVersionKey, kVersion}, {kControllersKey, controllers}};
    if (!QDir().mkpath(QFileInfo(path_).path())) {
        return QStringLiteral("can't make the folder %1").arg(QFileInfo(path_).path());
    }
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) {
        return file.errorString();
    }
    file.write(QJsonDocument(root).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        return file.errorString();
    }
    return std::nullopt;
}

void RestorationArchive::remove() const {
    QFile::remove(path_);
}

}  // namespace vl
