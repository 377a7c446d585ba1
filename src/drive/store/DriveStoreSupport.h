#pragma once

#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <sys/stat.h>
#include <atomic>
#include <optional>
#include <utility>
#include <vector>

// The file-system helpers and shared state of DriveStore's implementation files.
namespace vl::storesupport {

inline constexpr const char* kTagsAttribute = "user.xdg.tags";
inline constexpr const char* kTagsKey = "tags";
inline constexpr const char* kSharedKey = "shared";
inline constexpr const char* kPinnedKey = "pinned";
inline constexpr int kReadUnknown = 256;
// How long a read may trust the in-memory metadata record without looking at metadata.json.
inline constexpr qint64 kMetadataRecheckNs = 50'000'000;
// Bumped by every metadata.json write in this process, so that other stores of the same home
// in this process look again at once.
inline std::atomic<quint64> metadataWrites{0};
inline constexpr std::size_t MaxMovesKept = 16;
inline std::atomic<quint64> nextCachesId{0};
inline thread_local std::vector<std::pair<Url, Url>> movesMadeOnThisThread;

qint64 coarseNow();
// What QFile::encodeName gives on Linux, without its detour: every item read encodes its path.
QByteArray nativePath(const QString& path);
bool lstatPath(const QString& path, struct stat* st);
bool pathExists(const QString& path);
// rename(2) that never replaces: 0 or the errno.
int renameNoReplace(const QString& from, const QString& to);
QDateTime dateOf(const struct statx_timestamp& stamp);
QString parentPath(const QString& path);
QString lastComponent(const QString& path);
std::optional<Error> removeRecursively(const QString& path);
void setModificationDate(const QString& path, const QDateTime& date);
bool isUnsupportedXattrError(int error);
// lgetxattr(2) of any length: 0 and the value, or -1 with errno set.
ssize_t readXattr(const QByteArray& path, const char* name, QByteArray* value);
QString joinTags(const QStringList& tags);
QStringList splitTags(const QString& value);

}  // namespace vl::storesupport
