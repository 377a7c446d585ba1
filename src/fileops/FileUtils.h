#pragma once

#include "platform/cloud/CloudContainer.h"
#include "platform/cloud/ItemAttributes.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace vl {

// The one place where the app changes the drive: folder creation, removal and moves, each a
// coordinated write through its own FileCoordinator; plus the uncoordinated tests and lookups the
// flows use next to them. Class-level operations only, no state; everything is synchronous and
// runs on the caller's thread. Writes answer an error, or nothing on success.
class FileUtils {
public:
    FileUtils() = delete;

    // --- Coordinated file operations (FileUtils.cpp) ---
    static bool exists(const Url& url);
    static bool isFile(const Url& url);
    static bool isDir(const Url& url);
    // Creates missing parent folders too.
    static std::optional<Error> mkdir(const Url& url);
    static std::optional<Error> remove(const Url& url);
    // `destination` is the full URL the item is to have. An existing item there is never replaced:
    // the item takes the first free "Name 2.ext" variant instead. A file onto a folder, or a folder
    // onto a file, is refused with FeatureUnsupported before anything is coordinated.
    static std::optional<Error> moveTo(const Url& source, const Url& destination);
    static Url generateUniquePath(const Url& url);
    // The first free "%@ %d%@" variant of `basename` inside `directory`; nothing when `basename`
    // itself is free.
    static std::optional<QString> stringByUniquingPathInsideDirectoryForBasename(
        const QString& directory, const QString& basename);
    static void evictDocument(const Url& url);
    // The promised read first (valid for cloud-only items), then the ordinary one; an invalid
    // variant when neither gives a value or `url` is empty.
    static QVariant getResourceValueForURL(ItemAttributeKey key, const Url& url);
    // Logs the creation and modification dates and the size of the file at `path`.
    static void logFileAttributes(const QString& path);

    // --- Content-type and location rules (FileUtilsLocation.cpp) ---
    // The container holding the item and the item's path components below the container's
    // documents folder. The lookup's error, if any, is answered and the out-parameters are left
    // untouched; so they are when there is no container (with no error).
    static std::optional<Error> containerAndRelativePathforURLContainerRelativePathComponents(
        const Url& url, std::optional<CloudContainer>* container,
        QStringList* relativePathComponents);
    // "Drive ▸ Editor ▸ Letters": the folders that hold the item, never the item's own name.
    static std::optional<QString> displayableLocationForURL(const Url& url);
    static bool isAudioVideoImageFile(const Url& url);
    static bool isValidExtensionForContainer(const Url& url);

    // --- Names (FileUtilsFilename.cpp) ---
    // A name a person may give an item: not empty, not starting with ".", without "/" or ":", and
    // without noncharacters, code points unassigned in Unicode 3.2, control or format characters
    // and line or paragraph breaks. No length limit: the file system has the last word.
    static bool isValidFilename(const QString& name);
    // `name` without the white space and line breaks around it (general category Z*, U+000A to
    // U+000D, U+0085); the blanks inside stay.
    static QString trimmedFilename(const QString& name);
    // The name rule's character tests, by code point; a lone surrogate counts as illegal.
    static bool isIllegalFilenameCodePoint(char32_t c);
    static bool isControlOrFormatCodePoint(char32_t c);

    static inline const QString LocationSeparator = QStringLiteral(" \u25B8 ");
};

}  // namespace vl
