#pragma once

#include <QString>
#include <QVariant>

#include <memory>

class QSettings;

namespace vl {

// A preference store: plain values only (numbers, booleans, strings, ISO-8601 date strings,
// base64 blobs) in an INI file of the XDG configuration directory. Every read synchronises with
// the file first, so a value written by another process is seen. Safe from any thread.
class Preferences {
public:
    // The app's standard store ("VLLogLevel", the stored account token).
    static Preferences& standard();
    // The store addressed by application identifier, user, host and data-container path
    // ("GridMode", "QuickLaunch").
    static Preferences& containerAddressed(const QString& applicationId,
                                           const QString& containerPath);
    // The data container of an application, looked up by bundle identifier; empty when the
    // lookup fails.
    static QString appContainerPath(const QString& bundleIdentifier);

    explicit Preferences(const QString& filePath);
    ~Preferences();

    QVariant value(const QString& key) const;  // invalid when absent
    bool contains(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);
    void remove(const QString& key);
    // Writes pending changes; false when the file could not be written.
    bool synchronize();
    QString filePath() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace vl
