#pragma once

namespace vl {

// The application main loop. A start while another instance runs hands its launch URL to that
// instance and ends. Otherwise it makes the application object, installs the platform services
// the app reaches through its contracts (string tables, the drive service, application-state
// notifications, the managed-preferences watcher), hands launching to AppDelegate, restores the
// interface state, opens the launch URL and runs the event loop until the process is told to
// end, saving the interface state on the way out.
class ApplicationMain {
public:
    ApplicationMain() = delete;
    // The loop's result, which is the process exit status; 1, after one line on stderr naming
    // the cause and the remedy, when the app cannot start (a folder it needs, the display, Qt's
    // platform plugin). A start that handed its launch over ends with 0, or 1 when the running
    // instance could not be reached.
    static int run(int argc, char** argv);
};

}  // namespace vl
