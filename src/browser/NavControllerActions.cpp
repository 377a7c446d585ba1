// Renaming an item from its per-item actions or its actions menu.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "fileops/RenamePrompt.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "model/VLItem.h"
#include "model/VLRAppBookmarks.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentListController.h"

namespace vl {

void NavController::showRenamePrompt(const Url& url) {
    const std::shared_ptr<VLItem> item = VLItem::initWithURL(url);
    if (!item) {
        return;
    }
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    const auto callback = [weakSelf, url](const QString& name, bool* done) -> QString {
        if (name.isEmpty()) {
            return QString();
        }
        // Where the rename will put the item (a document reference renames its document), for
        // the undo bar; taken names are numbered by the move as they are here.
        const Url renamed = vlr_URLByResolvingBookmark(url).value_or(url);
        const Url wanted = UIUtils::computeNewURLNewBasename(renamed, name);
        const Url landed = wanted == renamed ? wanted : freeDestinationFor(wanted);
        const std::optional<Error> error = UIUtils::renameItemAtURLToName(url, name);
        *done = !error;
        if (!error && landed != renamed) {
            if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
                self->offerUndo({{renamed, landed, QString()}},
                                format(Strings::localized("Renamed “%1$@” to “%2$@”"),
                                       renamed.lastPathComponent(), landed.lastPathComponent()));
            }
        }
        return UIUtils::bestMessage(error);
    };
    const std::shared_ptr<FilenamePrompt> prompt =
        RenamePrompt::newWithFilenameCompletion(item->localizedName(), callback);
    folderPromptAlert_ = prompt;
    presentViewController(prompt->alert(), true);
}

}  // namespace vl
