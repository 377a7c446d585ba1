#pragma once

#include "drive/watch/DriveChangeWatcher.h"

#include <QString>

namespace vl {

struct DriveChangeWatcher::Record {
    int kind;
    QString path;
    QString newPath;
};

struct DriveChangeWatcher::PendingMove {
    quint32 cookie;
    QString rawPath;
    QString logicalPath;
    bool isDir;
    bool suppressed;
};

}  // namespace vl
