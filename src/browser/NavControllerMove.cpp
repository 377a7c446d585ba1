// New folders and moves: the New Folder and Move buttons, the move-target chooser, the new-folder
// prompt (which can move items into the folder it makes), and the moves themselves.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "fileops/NewFolderPrompt.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertController.h"
#include "toolkit/DocumentListController.h"
#include "toolkit/DocumentTargetSelectionController.h"

namespace vl {

void NavController::promtForNewFolderAndCreate(const std::shared_ptr<BarButtonItem>&) {
    VLLOG(6, "Pressed NewFolder");
    if (const std::shared_ptr<DocumentListController> list = getTopDocumentListController()) {
        showNewFolderPromptDuringMoveItemsToMove(list->presentedURL(), std::nullopt);
    }
}

void NavController::showMoveTargetForSelectedItems(const std::shared_ptr<BarButtonItem>&) {
    VLLOG(6, "Pressed Move");
    const std::shared_ptr<DocumentListController> list = getTopDocumentListController();
    if (!list) {
        return;
    }
    const QList<Url> selected = list->selectedItems();
    setEditModeAndUpdateUIForViewController(false, list);
    showMoveTargetForItemsInFolder(selected, list->presentedURL());
}

void NavController::showMoveTargetForItemsInFolder(const QList<Url>& items, const Url& folder) {
    VLLOG(6, "Prompting for Move Target, %d items", int(items.size()));
    if (!containerHasSubfolders(folder)) {
        showNewFolderPromptDuringMoveItemsToMove(folder, items);
        return;
    }
    const auto chooser = std::make_shared<DocumentTargetSelectionController>(items);
    chooser->setDelegate(sharedAs<NavController>());
    chooser->setModalPresentationStyle(ModalPresentationStyle::OverCurrentContext);
    presentViewController(chooser, true, [] { VLLOG(7, "Presented moveTarget"); });
}

void NavController::documentTargetSelectionControllerDidSelectItemAtURL(
    const std::shared_ptr<DocumentTargetSelectionController>& chooser, const Url& url) {
    const QList<Url> items = chooser->itemsToMove();
    chooser->dismissViewControllerAnimated(true);
    moveItemsToDirectoryAndShowErrorsToDirectory(items, url);
}

Url NavController::freeDestinationFor(const Url& destination) {
    const bool taken = FileUtils::exists(destination) ||
                       (CloudDocuments::isInstalled() &&
                        CloudDocuments::shared().hasItemPromiseAtURL(destination));
    return taken ? FileUtils::generateUniquePath(destination) : destination;
}

QList<Error> NavController::moveItemsToDirectoryToDirectory(const QList<Url>& items,
                                                            const Url& target) {
    VLLOG(7, "MoveTarget = %@", target);
    VLLOG(7, "ItemsToMove = %@", items);
    QList<Error> errors;
    QList<MovedItem> moved;
    for (const Url& item : items) {
        const Url destination = target.appendingPathComponent(item.lastPathComponent(), false);
        // Where the move will put it, for the undo bar: the move takes the next free name too.
        const Url landed = freeDestinationFor(destination);
        if (std::optional<Error> error = FileUtils::moveTo(item, destination)) {
            errors.append(*error);
        } else {
            moved.append({item, landed, QString()});
        }
    }
    if (!moved.isEmpty()) {
        const int count = int(moved.size());
        offerUndo(moved,
                  format(Strings::localizedPlural(QStringLiteral(".DICT.MOVED_ITEMS_TO.%d"), count),
                         count, target.lastPathComponent()));
    }
    return errors;
}

void NavController::moveItemsToDirectoryAndShowErrorsToDirectory(const QList<Url>& items,
                                                                 const Url& target) {
    const QList<Error> errors = moveItemsToDirectoryToDirectory(items, target);
    if (errors.size() == 1) {
        UIUtils::showErrorParentViewController(errors.first(), alertParent());
    } else if (errors.size() > 1) {
        const int count = int(errors.size());
        UIUtils::showAlertMessageParentViewController(
            format(Strings::localizedPlural(QStringLiteral(".DICT.CANNOT_MOVE_ITEMS.%d"), count),
                   count),
            QString(), alertParent());
    }
}

void NavController::showNewFolderPromptDuringMoveItemsToMove(
    const Url& folder, const std::optional<QList<Url>>& items) {
    if (folder.isEmpty()) {
        VLLOG(4, "dlc.presentedURL is nil");
        return;
    }
    const int count = items ? int(items->size()) : 0;
    const QString title =
        items
            ? format(Strings::localizedPlural(QStringLiteral(".DICT.MOVE_ITEMS.%d"), count), count)
            : Strings::localized("New Folder");
    const QString done = Strings::localized(items ? "Move" : "Create");
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    const auto callback = [weakSelf, folder, items](const QString& name, bool* isDone) -> QString {
        if (name.isEmpty()) {
            return QString();
        }
        const Url created = folder.appendingPathComponent(name, true);
        if (FileUtils::exists(created)) {
            VLLOG(6, "Item exists at path: %@", created.path());
            *isDone = false;
            return UIUtils::bestMessage(
                Error::fileError(Error::FileWriteFileExists, created.path()));
        }
        if (std::optional<Error> error = FileUtils::mkdir(created)) {
            *isDone = false;
            return UIUtils::bestMessage(*error);
        }
        if (!items) {
            *isDone = true;
            return QString();
        }
        const std::shared_ptr<NavController> self = weakSelf.lock();
        if (!self) {
            *isDone = true;
            return QString();
        }
        const QList<Error> errors = self->moveItemsToDirectoryToDirectory(*items, created);
        if (errors.isEmpty()) {
            *isDone = true;
            return QString();
        }
        if (errors.size() == 1) {
            return UIUtils::bestMessage(errors.first());
        }
        const int failed = int(errors.size());
        return format(
            Strings::localizedPlural(QStringLiteral(".DICT.CANNOT_MOVE_ITEMS.%d"), failed), failed);
    };
    const std::shared_ptr<FilenamePrompt> prompt =
        NewFolderPrompt::newWithTitleDoneButtonTextCompletion(title, done, callback);
    folderPromptAlert_ = prompt;
    presentViewController(prompt->alert(), true);
}

}  // namespace vl
