#pragma once

#include "platform/dispatch/Dispatch.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <functional>
#include <optional>

namespace vl {

// An object that shows or holds an item of the drive and wants to hear when the item changes,
// moves or disappears. Register it with FileCoordinator::addFilePresenter; the coordination
// service then calls the operations below as async blocks on presentedItemOperationQueue(), never
// on the caller's thread and never on the main thread unless that queue is the main queue.
//
// The service hears of changes made through coordinated writes of this process (the presenter
// named by the writing coordinator is not told of its own changes) and of changes made to the
// drive by other processes. presentedItemURL() and presentedItemOperationQueue() may be asked
// from any thread, so they must be thread-safe.
class FilePresenter {
public:
    using CompletionHandler = std::function<void(std::optional<Error>)>;

    virtual ~FilePresenter() = default;

    // The item presented; nothing when there is none at the moment (the presenter then hears
    // nothing).
    virtual std::optional<Url> presentedItemURL() const = 0;
    virtual DispatchQueuePtr presentedItemOperationQueue() const = 0;

    // The item's content or attributes changed.
    virtual void presentedItemDidChange() {}
    // The item was moved or renamed; later questions of presentedItemURL() should answer the new
    // URL.
    virtual void presentedItemDidMoveToURL(const Url& newURL) { (void)newURL; }
    // The item was deleted. Call the handler when done (with an error only to report that the
    // presenter could not give way; the deletion is not undone).
    virtual void accommodatePresentedItemDeletionWithCompletionHandler(
        CompletionHandler completionHandler) {
        completionHandler(std::nullopt);
    }

    // For a presented folder or package: an item inside it was deleted, changed, appeared or
    // moved (within it, into it or out of it).
    virtual void accommodatePresentedSubitemDeletionAtURLCompletionHandler(
        const Url& url, CompletionHandler completionHandler) {
        (void)url;
        completionHandler(std::nullopt);
    }
    virtual void presentedSubitemDidChangeAtURL(const Url& url) { (void)url; }
    virtual void presentedSubitemDidAppearAtURL(const Url& url) { (void)url; }
    virtual void presentedSubitemAtURLDidMoveToURL(const Url& oldURL, const Url& newURL) {
        (void)oldURL;
        (void)newURL;
    }
};

}  // namespace vl
