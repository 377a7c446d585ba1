#include "fileops/RenamePrompt.h"

#include "platform/text/Strings.h"

namespace vl {

std::shared_ptr<RenamePrompt> RenamePrompt::newWithFilenameCompletion(const QString& filename,
                                                                      Callback completion) {
    return make<RenamePrompt>(Strings::localized("Rename Item"),
                              Strings::localized("Enter a new name for this item."), filename,
                              filename, Strings::localized("Done"), std::move(completion));
}

}  // namespace vl
