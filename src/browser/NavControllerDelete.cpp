// The delete flow: items, or whole app libraries, never a mix, each request confirmed by the
// delete warning and its failures told once at the end.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "fileops/UIUtils.h"
#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/AlertAction.h"
#include "toolkit/DocumentListController.h"

namespace vl {

namespace {

// Deletes an app library's whole contents here and in the cloud; false (logged) on failure, with
// `error` set when the failure has one.
bool deleteContainerAt(const Url& url, std::optional<Error>* error) {
    CloudDocuments& documents = CloudDocuments::shared();
    Error lookupError;
    const std::optional<CloudContainer> container =
        documents.containerForItemAtURL(url, &lookupError);
    if (!container || lookupError.code() != 0 || container->identifier().isEmpty()) {
        VLLOG(4, "No container for URL %@: %@", url,
              lookupError.code() != 0 ? std::optional<Error>(lookupError) : std::nullopt);
        return false;
    }
    if (container->identifier() == documents.defaultContainerIdentifier()) {
        VLLOG(3, "NOT Deleting root container %@", container->identifier());
        return false;
    }
    VLLOG(6, "Deleting container %@", container->identifier());
    if (std::optional<Error> failure = documents.deleteAllContentsOfContainer(*container)) {
        VLLOG(4, "Failed to delete container %@: %@", container->identifier(),
              failure->description());
        *error = failure;
        return false;
    }
    return true;
}

}  // namespace

void NavController::showWarningAndDeleteDocument(const std::shared_ptr<BarButtonItem>&) {
    const std::shared_ptr<DocumentListController> list = getTopDocumentListController();
    const QList<Url> selected = list ? list->selectedItems() : QList<Url>();
    VLLOG(6, "Pressed Delete after selecting %@ items: %@", selected.size(), selected);
    showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(selected, nullptr,
                                                                                  list, nullptr);
}

void NavController::showWarningAndDeleteURLsUsingViewWithDocumentListControllerFinishedCompletion(
    const QList<Url>& urls, QWidget* view, const std::shared_ptr<DocumentListController>& list,
    std::function<void()> completion) {
    const unsigned containers = numContainersInURLArray(urls);
    if (containers > 0 && containers != unsigned(urls.size())) {
        VLLOG(3, "Not Deleting: mix of containers and items: %@", urls);
        if (completion) {
            completion();
        }
        return;
    }
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    const std::weak_ptr<DocumentListController> weakList = list;
    const bool hadList = bool(list);
    UIUtils::showDeleteWarningAlertHasContainerViewControllerUsingViewUsingButtonCompletion(
        urls, containers > 0, sharedAs<NavController>(), view, barButtonDeleteItem_,
        [weakSelf, weakList, hadList, urls, completion](const std::shared_ptr<AlertAction>&,
                                                        bool cancelled) {
            const std::shared_ptr<NavController> self = weakSelf.lock();
            int failures = 0;
            std::optional<Error> lastError;
            if (!cancelled && self) {
                if (hadList) {
                    self->setEditModeAndUpdateUIForViewController(false, weakList.lock());
                }
                for (const Url& url : urls) {
                    if (!CloudDocuments::shared().isContainerRootURL(url)) {
                        VLLOG(6, "Deleting item %@", url);
                        if (std::optional<Error> error = FileUtils::remove(url)) {
                            VLLOG(4, "Failed to delete URL %@: %@", url, error->description());
                            ++failures;
                            lastError = error;
                        }
                    } else if (!deleteContainerAt(url, &lastError)) {
                        ++failures;
                    }
                }
            }
            if (completion) {
                completion();
            }
            if (!self || failures == 0) {
                return;
            }
            if (failures == 1) {
                // A library refused without an error of its own (the drive's own container, or
                // none found) still says what failed.
                UIUtils::showErrorParentViewController(
                    lastError.value_or(Error::fileError(Error::FeatureUnsupported)),
                    self->alertParent());
            } else {
                UIUtils::showAlertMessageParentViewController(
                    format(Strings::localizedPlural(QStringLiteral(".DICT.CANNOT_DELETE_ITEMS.%d"),
                                                    failures),
                           failures),
                    QString(), self->alertParent());
            }
        });
}

std::shared_ptr<ViewController> NavController::alertParent() {
    const std::shared_ptr<ViewController> top = topViewController();
    return top ? top : sharedAs<ViewController>();
}

}  // namespace vl
