#pragma once

#include "platform/files/Url.h"

#include <QPointer>
#include <QString>
#include <QWidget>

class QVBoxLayout;

namespace vl {

// The base of the quick preview's renderers: one view per file, made for its URL, which loads the
// file itself (off the main thread where that takes long) and says when the content is on screen
// or why it can't be shown. A file that can't be read never ends in a crash or an empty page:
// the view shows a message that says so.
class PreviewContentView : public QWidget {
    Q_OBJECT
public:
    explicit PreviewContentView(const Url& url, QWidget* parent = nullptr);

    Url url() const { return url_; }
    bool isReady() const { return ready_; }
    bool hasFailed() const { return !failure_.isEmpty(); }
    // The text shown when the file can't be shown; empty otherwise.
    QString failureMessage() const { return failure_; }

    // The content back at its fitted size (a double tap, or a new window size).
    virtual void zoomToFit() {}

signals:
    // The content is shown (for a media file: ready to play).
    void contentReady();
    // The file can't be shown; the message is on screen.
    void contentFailed(const QString& message);

protected:
    // The widget that shows the content; it fills the view.
    void setContentWidget(QWidget* widget);
    void markReady();
    // Replaces the content with a message: a heading and the reason.
    void showFailure(const QString& reason);

private:
    Url url_;
    QVBoxLayout* layout_ = nullptr;
    QPointer<QWidget> content_;
    bool ready_ = false;
    QString failure_;
};

}  // namespace vl
