#pragma once

#include <QObject>
#include <QPointer>

#include <functional>

class QWidget;

namespace vl {

class Window;

// Notices the first paint of what the window opens on: the root folder list once its items were
// read, or whatever the root controller shows instead (the placeholder when no account is signed
// in). It logs that moment, which the cold-start benchmark reads from the log, then runs the
// start-up work that the first paint does not need, so that this work does not delay it.
class FirstPaintWatcher : public QObject {
public:
    FirstPaintWatcher(Window& window, std::function<void()> afterFirstPaint);
    ~FirstPaintWatcher() override;
    FirstPaintWatcher(const FirstPaintWatcher&) = delete;
    FirstPaintWatcher& operator=(const FirstPaintWatcher&) = delete;

    static constexpr const char* RootListMessage = "First paint of the root list";
    static constexpr const char* WindowMessage = "First paint of the window";

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The widget whose paint counts and whether it is the root list; null while the first
    // screen is not ready (the list's items are still being read).
    QWidget* firstScreenWidget(bool* isRootList) const;
    void painted(bool rootList);

    QPointer<Window> window_;
    std::function<void()> afterFirstPaint_;
    bool seen_ = false;
};

}  // namespace vl
