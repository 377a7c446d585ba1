#include "toolkit/PreviewTextView.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"

#include <QFile>
#include <QFontDatabase>
#include <QGestureEvent>
#include <QLabel>
#include <QPinchGesture>
#include <QScroller>
#include <QStringDecoder>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cmath>

namespace vl {

PreviewTextView::PreviewTextView(const Url& url, PreviewContentKind::Kind kind, QWidget* parent)
    : PreviewContentView(url, parent), kind_(kind), browser_(new QTextBrowser(this)) {
    browser_->setObjectName(QStringLiteral("previewText"));
    browser_->setAccessibleName(url.lastPathComponent());
    browser_->setFrameShape(QFrame::NoFrame);
    browser_->setOpenLinks(false);
    browser_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard |
                                      Qt::LinksAccessibleByMouse);
    browser_->viewport()->grabGesture(Qt::PinchGesture);
    browser_->viewport()->installEventFilter(this);
    QScroller::grabGesture(browser_->viewport(), QScroller::TouchGesture);
    if (kind == PreviewContentKind::Code) {
        browser_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        browser_->setLineWrapMode(QTextEdit::NoWrap);
    } else {
        QFont font = browser_->font();
        font.setPointSizeF(font.pointSizeF() * 1.15);
        browser_->setFont(font);
    }
    browser_->document()->setDocumentMargin(kind == PreviewContentKind::Code ? 12 : 20);
    setContentWidget(browser_);

    QPointer<PreviewTextView> self(this);
    const QString path = url.path();
    Dispatch::globalQueue(QualityOfService::UserInitiated)->async([self, path] {
        Read result = read(path);
        Dispatch::mainQueue()->async([self, result = std::move(result)] {
            if (self) {
                self->present(result);
            }
        });
    });
}

PreviewTextView::Read PreviewTextView::read(const QString& path) {
    Read result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = file.errorString();
        return result;
    }
    const QByteArray bytes = file.read(maximumBytes);
    if (file.error() != QFileDevice::NoError) {
        result.error = file.errorString();
        return result;
    }
    result.truncated = !file.atEnd();
    std::optional<QStringConverter::Encoding> encoding = QStringConverter::encodingForData(bytes);
    const bool marked = encoding.has_value() && *encoding != QStringConverter::Utf8;
    if (!marked && bytes.left(8192).contains('\0')) {
        result.error = Strings::localized("It isn’t a text file.");
        return result;
    }
    QStringDecoder decoder(encoding.value_or(QStringConverter::Utf8));
    result.text = decoder.decode(bytes);
    if (decoder.hasError()) {
        // Not UTF-8: the older single-byte files of Western systems.
        result.text = QString::fromLatin1(bytes);
    }
    return result;
}

void PreviewTextView::present(const Read& read) {
    if (!read.error.isEmpty()) {
        showFailure(read.error);
        return;
    }
    truncated_ = read.truncated;
    if (kind_ == PreviewContentKind::Markdown) {
        browser_->document()->setMarkdown(read.text);
    } else {
        browser_->setPlainText(read.text);
    }
    if (truncated_) {
        auto* note = new QLabel(
            format(Strings::localized("Showing the first %@ of the file."),
                   QLocale().formattedDataSize(maximumBytes, 0, QLocale::DataSizeSIFormat)),
            this);
        note->setObjectName(QStringLiteral("previewTextTruncated"));
        note->setAlignment(Qt::AlignCenter);
        note->setStyleSheet(QStringLiteral("color: #6d6d72; padding: 8px;"));
        static_cast<QVBoxLayout*>(layout())->addWidget(note);
    }
    markReady();
}

QString PreviewTextView::plainText() const {
    return browser_->toPlainText();
}

void PreviewTextView::zoomBy(int steps) {
    if (steps > 0) {
        browser_->zoomIn(steps);
    } else if (steps < 0) {
        browser_->zoomOut(-steps);
    }
    zoomSteps_ += steps;
}

void PreviewTextView::zoomToFit() {
    zoomBy(-zoomSteps_);
}

bool PreviewTextView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == browser_->viewport()) {
        if (event->type() == QEvent::Gesture) {
            auto* gesture = static_cast<QGestureEvent*>(event);
            if (auto* pinch = static_cast<QPinchGesture*>(gesture->gesture(Qt::PinchGesture))) {
                if (pinch->state() == Qt::GestureStarted) {
                    pinchSteps_ = 0;
                }
                // One point of text size per fifth of the fingers' spread.
                const double wanted = std::log(pinch->totalScaleFactor()) / std::log(1.2);
                const int steps = int(std::lround(wanted - pinchSteps_));
                if (steps != 0) {
                    zoomBy(steps);
                    pinchSteps_ += steps;
                }
                gesture->accept(pinch);
                return true;
            }
        } else if (event->type() == QEvent::Wheel) {
            auto* wheel = static_cast<QWheelEvent*>(event);
            if (wheel->modifiers() & Qt::ControlModifier) {
                const int steps = wheel->angleDelta().y() / 120;
                zoomBy(steps != 0 ? steps : (wheel->angleDelta().y() > 0 ? 1 : -1));
                return true;
            }
        } else if (event->type() == QEvent::MouseButtonDblClick && zoomSteps_ != 0) {
            zoomToFit();
            return true;
        }
    }
    return PreviewContentView::eventFilter(watched, event);
}

}  // namespace vl
