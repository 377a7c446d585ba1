#pragma once

#include "platform/files/Url.h"

namespace vl {

class PreviewController;

// Optional callbacks of a quick preview; every one has a default.
class PreviewControllerDelegate {
public:
    virtual ~PreviewControllerDelegate() = default;
    // The item at `index` became the current one (after paging, a reload or a refresh).
    virtual void previewControllerDidShowPreviewItem(PreviewController& /*controller*/,
                                                     int /*index*/) {}
    // Whether audio and video of the URL play under the platform's standard player controls;
    // without them a file plays by itself and a tap pauses it.
    virtual bool previewControllerWantsDefaultMediaPlayer(PreviewController& /*controller*/,
                                                          const Url& /*url*/) {
        return true;
    }
};

}  // namespace vl
