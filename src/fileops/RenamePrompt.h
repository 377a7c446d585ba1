#pragma once

#include "fileops/FilenamePrompt.h"

namespace vl {

// The prompt that renames an item: "Rename Item", the current name filled in (and as the
// placeholder), and the done button enabled from the start.
class RenamePrompt : public FilenamePrompt {
public:
    static std::shared_ptr<RenamePrompt> newWithFilenameCompletion(const QString& filename,
                                                                   Callback completion);

private:
    friend class FilenamePrompt;
    RenamePrompt() = default;
};

}  // namespace vl
