#pragma once

namespace vl {

class DocumentInteractionController;

// Told when the share sheet of a DocumentInteractionController went away, whatever ended it.
class DocumentInteractionControllerDelegate {
public:
    virtual ~DocumentInteractionControllerDelegate() = default;
    virtual void documentInteractionControllerDidDismissOptionsMenu(
        DocumentInteractionController* controller) = 0;
};

}  // namespace vl
