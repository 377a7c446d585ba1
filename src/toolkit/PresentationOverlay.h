#pragma once

#include "toolkit/PopoverPresentationController.h"
#include "toolkit/ViewController.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

namespace vl {

// The layer a presented controller lives in: a child of the presenter's top-level widget that
// covers it and follows its size. Full-screen and over-context controllers fill it; alerts sit
// centred on a dimmed backdrop; action sheets rise from the bottom on phones and, on tablets,
// point at their anchor as a popover (centred when they have none).
class PresentationOverlay : public QWidget {
    Q_OBJECT
public:
    PresentationOverlay(QWidget* host, QWidget* content, ModalPresentationStyle style);
    ~PresentationOverlay() override;

    // Where an action sheet points on a tablet; read again at every layout, so the popover follows
    // its anchor when the window changes size.
    void setPopover(std::shared_ptr<PopoverPresentationController> popover);
    // Whether the content shows as a popover now (a tablet-wide window and an anchor on screen).
    bool isPopover() const { return arrow_.has_value(); }
    // The side of the popover its arrow sits on, while it is one.
    std::optional<PopoverPresentationController::ArrowDirection> arrowDirection() const {
        return arrow_;
    }

    // Shows the overlay; `done` runs when it is fully shown (at once when not animated).
    void present(bool animated, std::function<void()> done);
    // Takes the content out (it stays owned by its controller) and deletes the overlay.
    void dismiss(bool animated, std::function<void()> done);

signals:
    // A tap on the backdrop, outside the content.
    void backdropTapped();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void layoutContent();
    bool layoutPopover(const QSize& size);
    void release();

    QPointer<QWidget> host_;
    QPointer<QWidget> content_;
    ModalPresentationStyle style_;
    std::shared_ptr<PopoverPresentationController> popover_;
    std::optional<PopoverPresentationController::ArrowDirection> arrow_;
    QRect anchor_;
};

}  // namespace vl
