#include "platform/app/Preferences.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QSettings>
#include <QStandardPaths>
#include <QtDebug>

#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace vl {

namespace {

const QString kAppId = QStringLiteral("com.tessaly.VelloraApp");

QString configDirectory(const QString& applicationId) {
    QString folder = applicationId;
    folder.replace(QLatin1Char('/'), QLatin1Char('_'));
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QLatin1Char('/') + folder;
}

// The container-addressed store of one application: one file per data container, named by a
// digest of the container path; the store without a container (failed container lookup) is
// "ContainerPreferences.conf".
QString containerStorePath(const QString& applicationId, const QString& containerPath) {
    QString name = QStringLiteral("ContainerPreferences");
    if (!containerPath.isEmpty()) {
        const QByteArray digest =
            QCryptographicHash::hash(containerPath.toUtf8(), QCryptographicHash::Sha256);
        name += QLatin1Char('-') + QString::fromLatin1(digest.toHex().left(16));
    }
    return configDirectory(applicationId) + QLatin1Char('/') + name + QStringLiteral(".conf");
}

// What is written to the file: plain values only, so that the file stays readable by other
// processes and tools. Empty when the value has no plain form.
std::optional<QVariant> plainValue(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::QString:
            return value;
        case QMetaType::QDateTime:
            // QSettings would write a binary blob for a QDateTime.
            return QVariant(value.toDateTime().toString(Qt::ISODateWithMs));
        case QMetaType::QByteArray:
            return QVariant(QString::fromLatin1(value.toByteArray().toBase64()));
        default:
            return std::nullopt;
    }
}

}  // namespace

struct Preferences::Impl {
    explicit Impl(const QString& path) : filePath(path) { open(); }

    void open() {
        settings = std::make_unique<QSettings>(filePath, QSettings::IniFormat);
        // QSettings posts itself a deferred sync on its thread's event loop; that sync would run
        // outside `mutex`. Without a thread the event is never delivered: we sync explicitly.
        settings->moveToThread(nullptr);
    }

    // Writes pending changes and re-reads the file. A QSettings keeps its first error for good,
    // so after a failure the next sync starts from a fresh object with the unwritten changes
    // replayed onto it.
    bool sync() {
        if (failed) {
            open();
            for (auto it = unsynced.cbegin(); it != unsynced.cend(); ++it) {
                if (it.value()) {
                    settings->setValue(it.key(), *it.value());
                } else {
                    settings->remove(it.key());
                }
            }
        }
        const QString directory = QFileInfo(filePath).absolutePath();
        settings->sync();
        failed = settings->status() != QSettings::NoError || !QFileInfo(directory).isDir();
        if (!failed) {
            unsynced.clear();
        }
        return !failed;
    }

    const QString filePath;
    mutable std::mutex mutex;
    std::unique_ptr<QSettings> settings;              // guarded by mutex
    QMap<QString, std::optional<QVariant>> unsynced;  // guarded by mutex; nullopt = removed
    bool failed = false;                              // guarded by mutex
};

Preferences::Preferences(const QString& filePath) : impl_(std::make_unique<Impl>(filePath)) {
    QDir().mkpath(QFileInfo(filePath).absolutePath());
}

Preferences::~Preferences() {
    std::lock_guard lock(impl_->mutex);
    if (!impl_->unsynced.isEmpty()) {
        impl_->sync();
    }
}

Preferences& Preferences::standard() {
    // Never destroyed: the store is read by the logging client until the process ends.
    static Preferences* store = new Preferences(configDirectory(kAppId) + QLatin1Char('/') +
                                                kAppId + QStringLiteral(".conf"));
    return *store;
}

Preferences& Preferences::containerAddressed(const QString& applicationId,
                                             const QString& containerPath) {
    static std::mutex mutex;
    static auto* stores = new std::map<std::pair<QString, QString>, std::unique_ptr<Preferences>>;
    std::lock_guard lock(mutex);
    auto& store = (*stores)[{applicationId, containerPath}];
    if (!store) {
        store = std::make_unique<Preferences>(containerStorePath(applicationId, containerPath));
    }
    return *store;
}

QString Preferences::appContainerPath(const QString& bundleIdentifier) {
    if (bundleIdentifier.isEmpty() || bundleIdentifier.contains(QLatin1Char('/')) ||
        bundleIdentifier == QLatin1String(".") || bundleIdentifier == QLatin1String("..")) {
        return {};
    }
    const QString dataHome = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (dataHome.isEmpty()) {
        return {};
    }
    const QString path = dataHome + QStringLiteral("/Containers/") + bundleIdentifier;
    if (!QDir().mkpath(path)) {
        return {};
    }
    return path;
}

QVariant Preferences::value(const QString& key) const {
    std::lock_guard lock(impl_->mutex);
    impl_->sync();
    return impl_->settings->value(key);
}

bool Preferences::contains(const QString& key) const {
    std::lock_guard lock(impl_->mutex);
    impl_->sync();
    return impl_->settings->contains(key);
}

void Preferences::setValue(const QString& key, const QVariant& value) {
    if (!value.isValid()) {
        remove(key);
        return;
    }
    const std::optional<QVariant> plain = plainValue(value);
    if (!plain) {
        qWarning("Preferences: refusing to store a %s for \"%s\"; only plain values are stored",
                 value.typeName(), qUtf8Printable(key));
        return;
    }
    std::lock_guard lock(impl_->mutex);
    impl_->settings->setValue(key, *plain);
    impl_->unsynced.insert(key, plain);
}

void Preferences::remove(const QString& key) {
    std::lock_guard lock(impl_->mutex);
    impl_->settings->remove(key);
    impl_->unsynced.insert(key, std::nullopt);
}

bool Preferences::synchronize() {
    std::lock_guard lock(impl_->mutex);
    return impl_->sync();
}

QString Preferences::filePath() const {
    return impl_->filePath;
}

}  // namespace vl
