#pragma once

#include "platform/files/Url.h"
#include "toolkit/ViewController.h"

#include <QList>
#include <QPointer>
#include <QString>

#include <memory>
#include <optional>

class QLabel;
class QListWidget;
class QPushButton;

namespace vl {

class DocumentTargetSelectionControllerDelegate;

// The move-target chooser: the drive's folders as a tree to walk, from the drive's root (app
// libraries by their names) down, with Move enabled only in a folder that can take every item
// (never an item itself or a folder inside one, never deeper than its container allows). Move
// tells the delegate the folder's URL; the delegate dismisses the chooser. Cancel dismisses it.
class DocumentTargetSelectionController : public ViewController {
    Q_OBJECT
public:
    // One folder the chooser lists.
    struct Folder {
        Url url;
        QString name;
        bool isAppLibrary = false;
        // False for an item being moved: its insides can't take it.
        bool canOpen = true;
    };

    explicit DocumentTargetSelectionController(QList<Url> itemsToMove);

    const QList<Url>& itemsToMove() const { return itemsToMove_; }
    std::shared_ptr<DocumentTargetSelectionControllerDelegate> delegate() const {
        return delegate_.lock();
    }
    void setDelegate(const std::weak_ptr<DocumentTargetSelectionControllerDelegate>& delegate) {
        delegate_ = delegate;
    }
    ModalPresentationStyle modalPresentationStyle() const override { return presentationStyle_; }
    void setModalPresentationStyle(ModalPresentationStyle style) { presentationStyle_ = style; }

    // --- Walking the tree (the buttons and rows do these) ---
    // The folder shown; it starts at the drive's root.
    const Url& currentFolder() const { return current_; }
    const QList<Folder>& shownFolders() const { return shown_; }
    // Shows `folder` when it is a folder of the drive that may be opened.
    bool openFolder(const Url& folder);
    // Back to the folder above; false at the drive's root.
    bool goUp();
    // Move: the delegate gets the current folder, when it can take the items.
    bool chooseCurrentFolder();
    void cancel();

    // --- The rules (DocumentTargetSelectionControllerRules.cpp) ---
    // Whether `folder` can take every one of `items`: a folder of the drive (not a package), none
    // of the items and inside none of them, not the folder every item is in already, and with
    // room in its container's folder levels for the deepest item.
    static bool canMoveItemsIntoFolder(const QList<Url>& items, const Url& folder);
    // The folders directly inside `folder` (hidden names and packages left out), by name.
    static QList<Folder> subfoldersOfFolder(const Url& folder, const QList<Url>& itemsToMove);
    // How many folder levels the item adds where it lands: 0 for a file or a package, 1 for an
    // empty folder, and one more for each level of folders inside it.
    static int folderDepthOfItem(const Url& item);

protected:
    void loadView() override;

private:
    void reload();
    void rowActivated(int row);

    QList<Url> itemsToMove_;
    std::weak_ptr<DocumentTargetSelectionControllerDelegate> delegate_;
    ModalPresentationStyle presentationStyle_ = ModalPresentationStyle::FullScreen;
    Url root_;
    Url current_;
    QList<Folder> shown_;
    QPointer<QLabel> titleLabel_;
    QPointer<QLabel> promptLabel_;
    QPointer<QLabel> emptyLabel_;
    QPointer<QPushButton> backButton_;
    QPointer<QPushButton> moveButton_;
    QPointer<QListWidget> list_;
};

}  // namespace vl
