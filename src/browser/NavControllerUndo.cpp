// Undo of moves and renames: after one, the bar at the bottom says what happened and offers Undo
// for a few seconds. Undo moves each item back through the same coordinated move, but only an
// item that still looks as it did right after the move; one changed since (edited, renamed or
// moved on another device) stays where it is, and the bar says so.

#include "browser/NavController.h"

#include "fileops/FileUtils.h"
#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/Toolbar.h"
#include "toolkit/UndoBar.h"

namespace vl {

UndoBar* NavController::undoBar() {
    if (!undoBar_) {
        undoBar_ = new UndoBar(view());
    }
    // Above the toolbar, which holds the status line or the edit buttons.
    Toolbar* bar = toolbar();
    undoBar_->setBottomInset(bar && !isToolbarHidden() ? bar->height() : 0);
    return undoBar_;
}

QString NavController::itemSignature(const Url& url) {
    if (!CloudDocuments::isInstalled()) {
        return QString();
    }
    Error error;
    const std::optional<ItemAttributes> attributes =
        CloudDocuments::shared().promisedItemResourceValues(
            url,
            ItemAttributeKey::ContentModificationDate | ItemAttributeKey::FileSize |
                ItemAttributeKey::IsDirectory,
            &error);
    if (!attributes) {
        return QString();
    }
    return format("%@ %@ %@", attributes->value(ItemAttributeKey::ContentModificationDate),
                  attributes->value(ItemAttributeKey::FileSize),
                  attributes->value(ItemAttributeKey::IsDirectory));
}

void NavController::offerUndo(const QList<MovedItem>& moved, const QString& message) {
    QList<MovedItem> recorded = moved;
    for (MovedItem& item : recorded) {
        item.signature = itemSignature(item.to);
    }
    const bool isRename = moved.size() == 1 && moved.first().from.deletingLastPathComponent() ==
                                                   moved.first().to.deletingLastPathComponent();
    const std::weak_ptr<NavController> weakSelf = sharedAs<NavController>();
    undoBar()->showMessage(message, [weakSelf, recorded, isRename] {
        if (const std::shared_ptr<NavController> self = weakSelf.lock()) {
            self->undoMoves(recorded, isRename);
        }
    });
}

void NavController::undoMoves(const QList<MovedItem>& moved, bool isRename) {
    int movedBack = 0;
    int left = 0;
    // Last moved, first back: an item renamed onto a freed name gives it up before it is wanted.
    for (auto it = moved.rbegin(); it != moved.rend(); ++it) {
        const QString now = itemSignature(it->to);
        if (now.isEmpty() || now != it->signature) {
            VLLOG(6, "Undo: %@ changed since it was moved, left where it is", it->to);
            ++left;
            continue;
        }
        if (std::optional<Error> error = FileUtils::moveTo(it->to, it->from)) {
            VLLOG(4, "Undo: can't move %@ back to %@: %@", it->to, it->from, *error);
            ++left;
            continue;
        }
        ++movedBack;
    }
    VLLOG(6, "Undo: %d items moved back, %d left", movedBack, left);
    QString message;
    if (left > 0) {
        message = format(Strings::localizedPlural(QStringLiteral(".DICT.UNDO_LEFT_ITEMS.%d"), left),
                         left);
    } else if (isRename) {
        message = format(Strings::localized("Renamed back to “%@”"),
                         moved.first().from.lastPathComponent());
    } else {
        message =
            format(Strings::localizedPlural(QStringLiteral(".DICT.MOVED_BACK_ITEMS.%d"), movedBack),
                   movedBack);
    }
    undoBar()->showMessage(message);
}

}  // namespace vl
