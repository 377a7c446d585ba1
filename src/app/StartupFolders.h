#pragma once

#include <QString>

#include <optional>

namespace vl {

// The folders the app cannot run without: the log's folder and the preferences' folder must be
// writable, and the drive home readable and writable. They are checked before anything else
// starts, so that a start that cannot work ends with one line that names the folder, the cause
// and the remedy, instead of a log that quietly stays empty or a drive that shows nothing.
class StartupFolders {
public:
    StartupFolders() = delete;

    // The first problem of the folders this process would use, as one line; absent when there
    // is none. Makes the log's and the preferences' folders when they are missing.
    static std::optional<QString> problem();

    // `what` names the folder in the line ("log folder"), `variable` the environment variable
    // that moves it. A missing folder is made.
    static std::optional<QString> writableFolderProblem(const QString& folder, const QString& what,
                                                        const char* variable);
    // A missing home is fine when it can be made (the drive service makes it).
    static std::optional<QString> driveHomeProblem(const QString& home);
};

}  // namespace vl
