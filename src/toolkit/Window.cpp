#include "toolkit/Window.h"

#include "toolkit/Background.h"
#include "toolkit/ViewController.h"

#include <QGuiApplication>
#include <QHideEvent>
#include <QPalette>
#include <QScreen>
#include <QVBoxLayout>

namespace vl {

QRect Window::mainScreenBounds() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        return {};
    }
    const QRect available = screen->availableGeometry();
    QSize size = kPhoneSize;
    size.setHeight(std::min(size.height(), available.height()));
    size.setWidth(std::min(size.width(), available.width()));
    QRect frame(QPoint(0, 0), size);
    frame.moveCenter(available.center());
    return frame;
}

UserInterfaceIdiom Window::idiomForWidth(int width) {
    return width >= kTabletMinimumWidth ? UserInterfaceIdiom::Tablet : UserInterfaceIdiom::Phone;
}

UserInterfaceIdiom Window::idiomForWidget(const QWidget* widget) {
    if (!widget) {
        return UserInterfaceIdiom::Phone;
    }
    return idiomForWidth(widget->window()->width());
}

Window::Window(const QRect& frame) : lastIdiom_(idiomForWidth(frame.width())) {
    setObjectName(QStringLiteral("rootWindow"));
    fillBackground(this);
    setGeometry(frame);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
}

Window::~Window() {
    // The root controller owns its view; take it out before the window deletes its children.
    if (root_ && root_->isViewLoaded() && root_->view()->parentWidget() == this) {
        root_->view()->hide();
        root_->view()->setParent(nullptr);
    }
}

void Window::setRootViewController(const std::shared_ptr<ViewController>& controller) {
    if (root_ == controller) {
        return;
    }
    if (root_ && root_->isViewLoaded() && root_->view()->parentWidget() == this) {
        if (appeared_) {
            root_->viewWillDisappear(false);
        }
        layout()->removeWidget(root_->view());
        root_->view()->hide();
        root_->view()->setParent(nullptr);
        if (appeared_) {
            root_->viewDidDisappear(false);
        }
    }
    root_ = controller;
    if (!root_) {
        return;
    }
    QWidget* view = root_->view();
    if (appeared_) {
        root_->viewWillAppear(false);
    }
    view->setParent(this);
    layout()->addWidget(view);
    view->show();
    if (appeared_) {
        root_->viewDidAppear(false);
    }
}

void Window::makeKeyAndVisible() {
    show();
    raise();
    activateWindow();
}

void Window::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const UserInterfaceIdiom idiom = userInterfaceIdiom();
    if (idiom != lastIdiom_) {
        lastIdiom_ = idiom;
        emit userInterfaceIdiomChanged(idiom);
    }
}

void Window::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!appeared_ && root_) {
        appeared_ = true;
        root_->viewWillAppear(false);
        root_->viewDidAppear(false);
    }
    appeared_ = true;
}

void Window::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (appeared_ && root_ && !event->spontaneous()) {
        root_->viewWillDisappear(false);
        root_->viewDidDisappear(false);
        appeared_ = false;
    }
}

}  // namespace vl
