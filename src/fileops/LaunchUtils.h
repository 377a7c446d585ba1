#pragma once

#include "platform/app/ApplicationRecord.h"
#include "platform/files/Url.h"

#include <QString>

#include <functional>
#include <optional>

namespace vl {

// Which application a document goes to when the user opens it, and the launch. The app prefers
// the document's default application, opening the document in place; it previews the document
// itself when there is none that fits, when the default is this app, and for pictures, movies and
// audio in the user's own folders of the drive. Class-level operations only; main thread only.
class LaunchUtils {
public:
    LaunchUtils() = delete;

    // The completion gets yes, at once, when an application was asked to open the document (or
    // the document a reference points to); whether it did is not known here.
    static void openInDefaultAppRequireOpenInWithCompletionBlock(
        const Url& url, bool requireOpenIn, const std::function<void(bool launched)>& completion);
    static std::optional<ApplicationRecord> defaultAppForDocumentRequireOpenIn(const Url& url,
                                                                               bool requireOpenIn);
    static std::optional<QString> defaultAppNameForDocumentRequireOpenIn(const Url& url,
                                                                         bool requireOpenIn);
    static bool isUrlInDefaultContainer(const Url& url);
};

}  // namespace vl
