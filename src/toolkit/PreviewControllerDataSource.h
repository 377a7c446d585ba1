#pragma once

#include "platform/files/Url.h"

namespace vl {

class PreviewController;

// What a quick preview pages through: a count and the file URL at each index.
class PreviewControllerDataSource {
public:
    virtual ~PreviewControllerDataSource() = default;
    virtual int numberOfPreviewItemsInPreviewController(PreviewController& controller) = 0;
    virtual Url previewControllerPreviewItemAtIndex(PreviewController& controller, int index) = 0;
};

}  // namespace vl
