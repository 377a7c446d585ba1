#pragma once

#include "toolkit/ViewController.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace vl {

// The layer a presented controller lives in: a child of the presenter's top-level widget that
// covers it and follows its size. Full-screen controllers fill it; alerts sit centred on a dimmed
// backdrop; action sheets sit at the bottom on phones and centred on tablets.
class PresentationOverlay : public QWidget {
    Q_OBJECT
public:
    PresentationOverlay(QWidget* host, QWidget* content, ModalPresentationStyle style);
    ~PresentationOverlay() override;

    // Shows the overlay; `done` runs when it is fully shown (at once when not animated).
    void present(bool animated, std::function<void()> done);
    // Takes the content out (it stays owned by its controller) and deletes the overlay.
    void dismiss(bool animated, std::function<void()> done);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void layoutContent();
    void release();

    QPointer<QWidget> host_;
    QPointer<QWidget> content_;
    ModalPresentationStyle style_;
};

}  // namespace vl
