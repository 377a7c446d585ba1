#pragma once

#include "platform/files/Url.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace vl {

class DocumentListController;

// What a folder list tells its owner. Every call comes on the main thread.
class DocumentListControllerDelegate {
public:
    virtual ~DocumentListControllerDelegate() = default;

    // The contained items or the selection changed (also after the first read of the folder).
    virtual void documentListControllerItemsChanged(
        const std::shared_ptr<DocumentListController>& list) = 0;
    // A folder was tapped; `newList` shows it and is not on any stack yet.
    virtual void documentListControllerDidSelectContainerWithViewController(
        const std::shared_ptr<DocumentListController>& list,
        const std::shared_ptr<DocumentListController>& newList) = 0;
    // A document (anything that is not a folder) was tapped.
    virtual void documentListControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentListController>& list, const Url& url) = 0;
    // A per-item action (DocumentListController::Action) was chosen for `url`; `originatingView`
    // is the row's area, to anchor what the action shows.
    virtual void documentListControllerPerformActionURLOriginatingViewCompletion(
        const std::shared_ptr<DocumentListController>& list, int action, const Url& url,
        QWidget* originatingView, std::function<void()> completion) = 0;
    // Whether the per-item menu offers `action` (one that availableActions() allows); a delegate
    // that cannot carry an action out yet keeps it off the menu.
    virtual bool documentListControllerCanPerformAction(
        const std::shared_ptr<DocumentListController>& /*list*/, int /*action*/) {
        return true;
    }
    virtual void documentListControllerPerformActionURL(
        const std::shared_ptr<DocumentListController>& list, int action, const Url& url) = 0;
};

}  // namespace vl
