// Per-item actions of a folder list (long press or right click on a row): delete and rename.

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

bool NavController::documentListControllerCanPerformAction(
    const std::shared_ptr<DocumentListController>&, int action) {
    return action == DocumentListController::Delete || action == DocumentListController::Rename;
}

void NavController::documentListControllerPerformActionURLOriginatingViewCompletion(
    const std::shared_ptr<DocumentListController>&, int action, const Url& url,
    QWidget* originatingView, std::function<void()> completion) {
    switch (action) {
        case DocumentListController::Delete:
            performActionCompletionBlock_ = completion;
            showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
                {url}, originatingView, nullptr, [completion] {
                    if (completion) {
                        completion();
                    }
                });
            return;
        case DocumentListController::Rename:
            VLLOG(6, "Rename action: %@", url);
            showRenamePrompt(url);
            return;
        default:
            VLLOG(4, "performAction:%@ -- unexpected value", action);
            if (completion) {
                completion();
            }
    }
}

void NavController::documentListControllerPerformActionURL(
    const std::shared_ptr<DocumentListController>& list, int action, const Url& url) {
    documentListControllerPerformActionURLOriginatingViewCompletion(list, action, url, view(),
                                                                    [] {});
}

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
