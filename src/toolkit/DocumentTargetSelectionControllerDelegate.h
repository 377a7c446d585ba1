#pragma once

#include "platform/files/Url.h"

#include <memory>

namespace vl {

class DocumentTargetSelectionController;

// Told which folder the person chose to move the items into; it dismisses the chooser.
class DocumentTargetSelectionControllerDelegate {
public:
    virtual ~DocumentTargetSelectionControllerDelegate() = default;
    virtual void documentTargetSelectionControllerDidSelectItemAtURL(
        const std::shared_ptr<DocumentTargetSelectionController>& chooser, const Url& url) = 0;
};

}  // namespace vl
