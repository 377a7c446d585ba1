#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <chrono>
#include <functional>

class QLabel;
class QPushButton;

namespace vl {

// A small bar along the bottom of a window that says what just happened ("Moved 2 items to
// Trips") and, for a while, offers to take it back with an Undo button. It floats over its parent
// widget, above `bottomInset` pixels kept free for a toolbar, and hides itself when its time is
// up. A new message replaces the one shown, and its undo with it. Main thread only; the time runs
// on the dispatch clock, so tests move it on with the virtual dispatcher.
class UndoBar : public QWidget {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds DefaultDuration{6000};

    explicit UndoBar(QWidget* parent);

    // Shows `message` with an Undo button that runs `undo` once (and hides the bar); without an
    // undo, the message alone.
    void showMessage(const QString& message, std::function<void()> undo = {},
                     std::chrono::milliseconds duration = DefaultDuration);
    void dismiss();

    QString message() const;
    bool canUndo() const;
    // What a tap on Undo does.
    void triggerUndo();
    QPushButton* undoButton() const { return undoButton_; }

    int bottomInset() const { return bottomInset_; }
    void setBottomInset(int pixels);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QLabel* label_;
    QPushButton* undoButton_;
    std::function<void()> undo_;
    // Tells the timer of the message shown from those of messages it replaced.
    quint64 generation_ = 0;
    int bottomInset_ = 0;
};

}  // namespace vl
