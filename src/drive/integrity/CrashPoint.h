#pragma once

namespace vl {

// Numbered steps of the drive's write paths where a test can kill the process, to check that a
// crash at any of them leaves every item reachable. Armed by VELLORA_CRASH_AT=N (the N-th step
// reached in the process kills it with SIGKILL) or by arm(); unarmed it only counts.
class CrashPoint {
public:
    static void reach();
    // Kills the process at the n-th step from now (0 disarms); resets the count.
    static void arm(int n);
    // Steps reached since the last arm().
    static int reached();
};

}  // namespace vl
