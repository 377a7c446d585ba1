#pragma once

#include "toolkit/PreviewContentKind.h"
#include "toolkit/ViewController.h"

#include "platform/files/Url.h"

#include <QPointer>

#include <memory>
#include <optional>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace vl {

class BarButtonItem;
class PreviewContentView;
class PreviewControllerDataSource;
class PreviewControllerDelegate;

// The quick preview: shows the files its data source lists, one at a time, each in the view made
// for its kind (PreviewContentKind), with Previous / Next under it when there are several. The
// title is the current file's name; other code adds its own buttons to the right of the
// navigation bar. The data source and the delegate are held weakly (a subclass may be both).
class PreviewController : public ViewController {
    Q_OBJECT
public:
    PreviewController();
    ~PreviewController() override;

    std::shared_ptr<PreviewControllerDataSource> dataSource() const { return dataSource_.lock(); }
    void setDataSource(const std::weak_ptr<PreviewControllerDataSource>& dataSource);
    std::shared_ptr<PreviewControllerDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::weak_ptr<PreviewControllerDelegate>& delegate) {
        delegate_ = delegate;
    }

    // The count the data source last gave (reloadData asks again).
    int previewItemCount() const { return count_; }
    int currentPreviewItemIndex() const { return current_; }
    // Shows the item at `index` (clamped to the list); the current item is shown again only
    // when the index changes.
    void setCurrentPreviewItemIndex(int index);
    // The URL shown; empty when the list is empty.
    Url currentPreviewItem() const { return currentUrl_; }
    void showNextPreviewItem();
    void showPreviousPreviewItem();

    // Asks the data source again for the count and the current URL and shows it, keeping the
    // index where the list still reaches it.
    void reloadData();
    // Reads the current file again (its content changed) and shows it from the start.
    void refreshCurrentPreviewItem();

    // Buttons added to the right of the navigation bar, in order, after the preview's own.
    const QList<std::shared_ptr<BarButtonItem>>& additionalRightBarButtonItems() const {
        return additionalRightItems_;
    }
    void setAdditionalRightBarButtonItems(const QList<std::shared_ptr<BarButtonItem>>& items);

    // The view that shows the current file (null before the view loads or when the list is
    // empty) and the kind that chose it.
    PreviewContentView* currentContentView() const;
    PreviewContentKind::Kind currentContentKind() const { return kind_; }

    // Whether the preview has a renderer of its own for the URL; the item model asks the same.
    static bool canPreviewItem(const Url& url, std::optional<bool> isFolder = std::nullopt);

signals:
    // The current file's view changed (a new item, a reload, a refresh).
    void currentContentViewChanged(PreviewContentView* view);

protected:
    void loadView() override;
    void viewDidLoad() override;

private:
    void showCurrent();
    void updatePageBar();
    void updateRightBarItems();
    PreviewContentView* makeContentView(const Url& url, PreviewContentKind::Kind kind);

    std::weak_ptr<PreviewControllerDataSource> dataSource_;
    std::weak_ptr<PreviewControllerDelegate> delegate_;
    int count_ = 0;
    int current_ = 0;
    Url currentUrl_;
    PreviewContentKind::Kind kind_ = PreviewContentKind::Generic;
    QList<std::shared_ptr<BarButtonItem>> additionalRightItems_;

    QVBoxLayout* layout_ = nullptr;
    QPointer<PreviewContentView> content_;
    QPointer<QLabel> emptyLabel_;
    QWidget* pageBar_ = nullptr;
    QToolButton* previousButton_ = nullptr;
    QToolButton* nextButton_ = nullptr;
    QLabel* pageLabel_ = nullptr;
};

}  // namespace vl
