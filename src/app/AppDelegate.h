#pragma once

#include <QUrl>
#include <QVariantMap>

#include <memory>

namespace vl {

class FirstPaintWatcher;
class Window;

// The application delegate: builds the one window with the root navigation controller before
// any interface state is restored, starts the network watcher once the window first painted, and
// answers whether the interface state may be saved and restored (only while a cloud account is
// signed in), and turns a launch URL into the root controller's request to show an item.
class AppDelegate {
public:
    AppDelegate();
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    bool applicationWillFinishLaunchingWithOptions(const QVariantMap& launchOptions);
    bool applicationDidFinishLaunchingWithOptions(const QVariantMap& launchOptions);
    // A launch URL ("velloraapp:" and the item's path, with an optional `mode` of "preview",
    // "details" or "info") from a trusted sender, named in the options under
    // LaunchSource::OptionKey: yes when the root controller built the item's screens.
    bool applicationOpenURLOptions(const QUrl& url, const QVariantMap& options);
    void applicationWillResignActive();
    void dumpWindowInfo();
    bool applicationShouldSaveApplicationState();
    bool applicationShouldRestoreApplicationState();

    // The window the application-delegate protocol asks for; the delegate never sets it itself.
    std::shared_ptr<Window> window() const { return window_; }
    void setWindow(std::shared_ptr<Window> window) { window_ = std::move(window); }

    // The window the delegate built and owns.
    Window* rootWindow() const { return rootWindow_.get(); }

private:
    // Asked of the window's root view controller.
    bool rootCheckNimbraState() const;

    std::unique_ptr<Window> rootWindow_;
    std::shared_ptr<Window> window_;
    std::unique_ptr<FirstPaintWatcher> firstPaint_;
};

}  // namespace vl
