#include "fileops/LaunchUtils.h"

#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "model/VLRAppBookmarks.h"
#include "platform/cloud/CloudDocuments.h"
#include "toolkit/DocumentInteractionController.h"

namespace vl {

void LaunchUtils::openInDefaultAppRequireOpenInWithCompletionBlock(
    const Url& url, bool requireOpenIn, const std::function<void(bool launched)>& completion) {
    VLLOG(6, "Opening document %@ in default app", url);
    const Url document = vlr_URLByResolvingBookmark(url).value_or(url);
    const std::optional<ApplicationRecord> app =
        defaultAppForDocumentRequireOpenIn(document, requireOpenIn);
    if (app) {
        DocumentInteractionController::interactionControllerWithURL(document)
            ->openDocumentWithApplication(*app);
    }
    if (completion) {
        completion(app.has_value());
    }
}

std::optional<ApplicationRecord> LaunchUtils::defaultAppForDocumentRequireOpenIn(
    const Url& url, bool requireOpenIn) {
    if (!FileUtils::exists(url)) {
        VLLOG(7, "Assuming apps can open a promised document...");
    }
    if (isUrlInDefaultContainer(url) && FileUtils::isAudioVideoImageFile(url)) {
        VLLOG(7, "Preferring GP over default app to open %@", url);
        return std::nullopt;
    }
    const std::optional<ApplicationRecord> app =
        DocumentInteractionController::interactionControllerWithURL(url)->defaultApplication();
    if (!app) {
        VLLOG(7, "No default app to open %@", url);
        return std::nullopt;
    }
    VLLOG(7, "App for %@: %@, %@, %@, %@, %@, %@, %@, %@, %@, %@, %@", url, app->itemName,
          app->localizedName, app->localizedShortName, app->shortVersionString, app->vendorName,
          app->bundleIdentifier, app->bundleExecutable, app->bundleContainerURL,
          static_cast<int>(app->installed), app->itemID, app->description);
    if (requireOpenIn && !app->supportsOpenInPlace) {
        VLLOG(7, "App %@ does not support open in place. Ignoring", app->logDescription());
        return std::nullopt;
    }
    if (app->bundleIdentifier == DocumentInteractionController::OwnApplicationIdentifier) {
        VLLOG(7, "Ignoring %@ as default app", app->logDescription());
        return std::nullopt;
    }
    return app;
}

std::optional<QString> LaunchUtils::defaultAppNameForDocumentRequireOpenIn(const Url& url,
                                                                           bool requireOpenIn) {
    if (std::optional<ApplicationRecord> app =
            defaultAppForDocumentRequireOpenIn(url, requireOpenIn)) {
        return app->localizedName;
    }
    return std::nullopt;
}

bool LaunchUtils::isUrlInDefaultContainer(const Url& url) {
    std::optional<CloudContainer> container;
    QStringList components;
    if (std::optional<Error> error =
            FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(
                url, &container, &components)) {
        VLLOG(4, "Can't get container for URL %@: %@", url, *error);
    }
    return container &&
           container->identifier() == CloudDocuments::shared().defaultContainerIdentifier();
}

}  // namespace vl
