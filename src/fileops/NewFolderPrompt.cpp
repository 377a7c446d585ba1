#include "fileops/NewFolderPrompt.h"

#include "platform/text/Strings.h"

namespace vl {

std::shared_ptr<NewFolderPrompt> NewFolderPrompt::newWithTitleDoneButtonTextCompletion(
    const QString& title, const QString& doneButtonText, Callback completion) {
    return make<NewFolderPrompt>(title, Strings::localized("Enter a name for this folder."),
                                 Strings::localized("Folder Name"), QString(), doneButtonText,
                                 std::move(completion));
}

}  // namespace vl
