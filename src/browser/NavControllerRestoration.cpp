// State restoration: the item a preview screen shows, and its mode, kept for the next start.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "model/VLItem.h"
#include "platform/app/StateCoder.h"
#include "preview/PreviewItemManager.h"

#include <algorithm>
#include <limits>

namespace vl {

void NavController::encodeRestorableStateWithCoder(StateCoder& coder) {
    NavigationController::encodeRestorableStateWithCoder(coder);
    // A folder list shown ends the manager, so a person who went back to the list gets the list.
    if (!itemManager_ || !itemManager_->item() || itemManager_->item()->url().isEmpty()) {
        return;
    }
    coder.setUrl(RestorationURLKey, itemManager_->item()->url());
    coder.setInteger(RestorationPreviewModeKey, itemManager_->mode());
}

void NavController::decodeRestorableStateWithCoder(const StateCoder& coder) {
    NavigationController::decodeRestorableStateWithCoder(coder);
    const std::optional<Url> url = coder.url(RestorationURLKey);
    if (!url || !FileUtils::exists(*url) || !FileUtils::isFile(*url)) {
        return;
    }
    // Any mode other than preview is details, a number too large for the manager's mode too.
    const qint64 mode =
        std::clamp<qint64>(coder.integer(RestorationPreviewModeKey),
                           std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    replaceItemManager();
    itemManager_->setMode(static_cast<int>(mode));
    itemManager_->setNavigationController(sharedAs<NavigationController>());
    if (const std::shared_ptr<VLItem> item = VLItem::initWithURL(*url)) {
        itemManager_->previewItem(item);
    }
}

}  // namespace vl
