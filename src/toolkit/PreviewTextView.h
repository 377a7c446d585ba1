#pragma once

#include "toolkit/PreviewContentKind.h"
#include "toolkit/PreviewContentView.h"

class QTextBrowser;

namespace vl {

// A text file: prose wrapped in the body font, source code and CSV in the fixed-width font
// without wrapping, Markdown rendered. The file is read and decoded on a global queue; a very
// long file shows its beginning and says so. Pinch and Ctrl + wheel change the text size, a
// double tap goes back to the normal size.
class PreviewTextView : public PreviewContentView {
    Q_OBJECT
public:
    // Files longer than this show their first part only.
    static constexpr qint64 maximumBytes = 8 * 1024 * 1024;

    PreviewTextView(const Url& url, PreviewContentKind::Kind kind, QWidget* parent = nullptr);

    QTextBrowser* textBrowser() const { return browser_; }
    PreviewContentKind::Kind kind() const { return kind_; }
    bool isTruncated() const { return truncated_; }
    // The text as shown, without Markdown's marks.
    QString plainText() const;

    void zoomToFit() override;

    struct Read {
        QString text;
        bool truncated = false;
        QString error;
    };
    // Reads and decodes the file (UTF-8, UTF-16 with a byte-order mark, else Latin-1); a file
    // with NUL bytes in its first part is not text. Safe on any thread.
    static Read read(const QString& path);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void present(const Read& read);
    void zoomBy(int steps);

    PreviewContentKind::Kind kind_;
    QTextBrowser* browser_ = nullptr;
    bool truncated_ = false;
    int zoomSteps_ = 0;
    double pinchSteps_ = 0;
};

}  // namespace vl
