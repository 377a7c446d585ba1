#pragma once

namespace vl {

// The application main loop: makes the application object, installs the platform services the
// app reaches through its contracts (string tables, the drive service, application-state
// notifications, the managed-preferences watcher), hands launching to AppDelegate and runs the
// event loop until the process is told to end.
class ApplicationMain {
public:
    ApplicationMain() = delete;
    // The loop's result, which is the process exit status; 1, after one line on stderr naming
    // the cause and the remedy, when the app cannot start (a folder it needs, the display, Qt's
    // platform plugin).
    static int run(int argc, char** argv);
};

}  // namespace vl
