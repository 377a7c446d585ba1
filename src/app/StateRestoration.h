#pragma once

#include "platform/app/RestorationArchive.h"

namespace vl {

class AppDelegate;

// Keeps the interface state from one run to the next: the window's root controller, under its
// restoration identifier, saves into the restoration archive when the app resigns active and
// when it quits, and gets its state back at start-up, right after the window is built. Each
// happens only while the delegate allows it (a cloud account is signed in); when saving is not
// allowed, the archive is removed, so that a later start does not bring back a screen from
// before.
class StateRestoration {
public:
    StateRestoration(AppDelegate& delegate, RestorationArchive archive)
        : delegate_(delegate), archive_(std::move(archive)) {}

    void restoreApplicationState();
    void saveApplicationState();

    const RestorationArchive& archive() const { return archive_; }

private:
    AppDelegate& delegate_;
    RestorationArchive archive_;
};

}  // namespace vl
