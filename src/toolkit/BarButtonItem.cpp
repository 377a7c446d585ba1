#include "toolkit/BarButtonItem.h"

#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

namespace vl {

namespace {

// System items drawn with a word use the string table; the others use an icon, and a screen
// reader says the name the string table gives them.
struct SystemLook {
    const char* titleKey;
    const char* iconName;
    const char* spokenKey = nullptr;
};

SystemLook lookOf(BarButtonItem::SystemItem item) {
    using S = BarButtonItem::SystemItem;
    switch (item) {
        case S::Done:
            return {"Done", nullptr};
        case S::Cancel:
            return {"Cancel", nullptr};
        case S::Edit:
            return {"Edit", nullptr};
        case S::Save:
            return {"Save", nullptr};
        case S::Add:
            return {nullptr, "list-add", "Add"};
        case S::FlexibleSpace:
        case S::FixedSpace:
            return {nullptr, nullptr};
        case S::Compose:
            return {nullptr, "document-edit", "Compose"};
        case S::Reply:
            return {nullptr, "mail-reply-sender", "Reply"};
        case S::Action:
            return {nullptr, "document-send", "Share"};
        case S::Organize:
            return {nullptr, "folder", "Move"};
        case S::Bookmarks:
            return {nullptr, "bookmarks", "Bookmarks"};
        case S::Search:
            return {nullptr, "edit-find", "Search"};
        case S::Refresh:
            return {nullptr, "view-refresh", "Refresh"};
        case S::Stop:
            return {nullptr, "process-stop", "Stop"};
        case S::Camera:
            return {nullptr, "camera-photo", "Camera"};
        case S::Trash:
            return {nullptr, "user-trash", "Delete"};
    }
    return {nullptr, nullptr};
}

}  // namespace

std::shared_ptr<BarButtonItem> BarButtonItem::withTitle(const QString& title, Style style,
                                                        Action action) {
    std::shared_ptr<BarButtonItem> item(new BarButtonItem);
    item->title_ = title;
    item->style_ = style;
    item->action_ = std::move(action);
    return item;
}

std::shared_ptr<BarButtonItem> BarButtonItem::withIcon(const QIcon& icon, Style style,
                                                       Action action) {
    std::shared_ptr<BarButtonItem> item(new BarButtonItem);
    item->icon_ = icon;
    item->style_ = style;
    item->action_ = std::move(action);
    return item;
}

std::shared_ptr<BarButtonItem> BarButtonItem::withSystemItem(SystemItem systemItem, Action action) {
    std::shared_ptr<BarButtonItem> item(new BarButtonItem);
    item->hasSystemItem_ = true;
    item->systemItem_ = systemItem;
    item->action_ = std::move(action);
    const SystemLook look = lookOf(systemItem);
    if (look.titleKey) {
        item->title_ = Strings::localized(look.titleKey);
    }
    if (look.iconName) {
        item->icon_ = ToolkitIcons::icon(QString::fromLatin1(look.iconName));
    }
    if (look.spokenKey) {
        item->accessibleName_ = Strings::localized(look.spokenKey);
    }
    if (systemItem == SystemItem::Done) {
        item->style_ = Style::Done;
    }
    return item;
}

std::shared_ptr<BarButtonItem> BarButtonItem::withCustomView(QWidget* view) {
    std::shared_ptr<BarButtonItem> item(new BarButtonItem);
    item->customView_ = view;
    return item;
}

BarButtonItem::~BarButtonItem() {
    delete customView_.data();
}

void BarButtonItem::trigger() {
    if (!enabled_ || isSpace() || !action_) {
        return;
    }
    // The action may drop the last other reference to this item.
    std::shared_ptr<BarButtonItem> self = shared_from_this();
    Action action = action_;
    action(self);
}

void BarButtonItem::setTitle(const QString& title) {
    if (title_ != title) {
        title_ = title;
        emit changed();
    }
}

void BarButtonItem::setAccessibleName(const QString& name) {
    if (accessibleName_ != name) {
        accessibleName_ = name;
        emit changed();
    }
}

void BarButtonItem::setWidth(int width) {
    if (width_ != width) {
        width_ = width;
        emit changed();
    }
}

void BarButtonItem::setEnabled(bool enabled) {
    if (enabled_ == enabled) {
        return;
    }
    enabled_ = enabled;
    if (customView_) {
        customView_->setEnabled(enabled);
    }
    emit changed();
}

}  // namespace vl
