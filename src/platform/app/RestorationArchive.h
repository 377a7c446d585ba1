#pragma once

#include "platform/app/StateCoder.h"

#include <QString>

#include <map>
#include <optional>

namespace vl {

// The interface state kept from one run of the app to the next: one coder per restoration
// identifier, in one file of the app's data directory. The file is replaced whole, so a crash
// while writing leaves the previous state or the new one.
class RestorationArchive {
public:
    // $XDG_DATA_HOME/com.tessaly.VelloraApp/RestorationArchive.json
    static QString defaultPath();

    explicit RestorationArchive(QString path) : path_(std::move(path)) {}
    const QString& path() const { return path_; }

    // The coders by restoration identifier; empty when there is no archive or it can't be read,
    // in which case `problem` (when given) says why.
    std::map<QString, StateCoder> read(QString* problem = nullptr) const;
    // Why the archive could not be written, or nothing.
    std::optional<QString> write(const std::map<QString, StateCoder>& coders) const;
    void remove() const;

private:
    QString path_;
};

}  // namespace vl
