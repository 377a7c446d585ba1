#pragma once

#include <QList>
#include <QPointer>

#include <memory>

class QLabel;
class QToolButton;

namespace vl {

class BarButtonItem;
class DocumentListController;

// The status line under a folder list outside edit mode: the item count and the free space in
// one centred label, and a button that switches the list between list and grid and remembers the
// choice. Each list carries its own, attached to it for as long as it lives. Main thread only.
class DocumentListControllerStatusBar {
public:
    // The key the status bar is attached to its list under.
    static inline const QString AssociationKey = QStringLiteral("_VelloraAppStatusBar");

    // Builds the label, the grid/list toggle for `list` and the toolbar items.
    void createStatusBar(const std::weak_ptr<DocumentListController>& list);

    QLabel* statusLabel() const { return statusLabel_; }
    QToolButton* listModeToggle() const { return listModeToggle_; }
    const QList<std::shared_ptr<BarButtonItem>>& toolbarItems() const { return toolbarItems_; }

    // --- Attached to a folder list ---
    static std::shared_ptr<DocumentListControllerStatusBar> statusBar(
        const std::shared_ptr<DocumentListController>& list);
    static void setStatusBar(const std::shared_ptr<DocumentListController>& list,
                             const std::shared_ptr<DocumentListControllerStatusBar>& statusBar);
    // Attaches a new status bar to the list and builds it.
    static void createStatusBar(const std::shared_ptr<DocumentListController>& list);
    // Gives the list the status bar's toolbar items.
    static void displayStatusBar(const std::shared_ptr<DocumentListController>& list);

private:
    void showListMode(bool grid);

    QPointer<QLabel> statusLabel_;
    QPointer<QToolButton> listModeToggle_;
    QList<std::shared_ptr<BarButtonItem>> toolbarItems_;
};

}  // namespace vl
