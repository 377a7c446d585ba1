#pragma once

#include "platform/files/Error.h"

#include <QString>

#include <optional>

namespace vl {

// Where the drive service keeps its work in progress: downloads, uploads, records being written
// and items being removed. It is <home>/staging/<process>/, beside drive/ and cloud/ (so a rename
// moves a finished copy into place) but outside both, so no user item can ever be named like one
// of these files, skipped as one, or overwritten by one. Each process has its own folder, named
// after its id and start time; the folders of processes that are gone are swept at start-up.
class StagingArea {
public:
    static QString rootFor(const QString& homeRoot);
    // A fresh path in this process's folder (nothing is there yet); the folder is made on demand.
    static std::optional<QString> newPath(const QString& homeRoot, Error* error);
    // Removes the folders of processes that are no longer running, and what they held.
    static void sweep(const QString& homeRoot);
};

}  // namespace vl
