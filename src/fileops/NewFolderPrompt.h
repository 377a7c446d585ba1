#pragma once

#include "fileops/FilenamePrompt.h"

namespace vl {

// The prompt that names a new folder: "Enter a name for this folder.", an empty field showing
// "Folder Name", and the done button disabled until a valid name is typed.
class NewFolderPrompt : public FilenamePrompt {
public:
    static std::shared_ptr<NewFolderPrompt> newWithTitleDoneButtonTextCompletion(
        const QString& title, const QString& doneButtonText, Callback completion);

private:
    friend class FilenamePrompt;
    NewFolderPrompt() = default;
};

}  // namespace vl
