#pragma once

#include "platform/cloud/ItemProgress.h"
#include "toolkit/ViewController.h"

#include <QMargins>
#include <QPointer>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

class QPushButton;
class QVBoxLayout;

namespace vl {

class PreviewItemManager;

// The common base of the app's own preview screens: a white page with an inset content area
// (`wrapperView`) whose margins follow the size classes, the Share, Delete and Move buttons in the
// toolbar (phone) or the navigation bar (tablet), the link back to the screen's manager, and the
// following of the item's published download progress. Main thread only, except the progress
// calls, which may come from any thread.
class PreviewBaseViewController : public ViewController {
    Q_OBJECT
public:
    PreviewBaseViewController();
    ~PreviewBaseViewController() override;

    // The interface orientations.
    enum Orientation {
        Portrait = 1,
        PortraitUpsideDown = 2,
        LandscapeLeft = 3,
        LandscapeRight = 4
    };
    enum class SizeClass { Compact, Regular };

    static constexpr int kRegularMargin = 45;
    static constexpr int kCompactMargin = 17;
    // A page at least this high has a regular vertical size class.
    static constexpr int kRegularMinimumHeight = 500;

    QWidget* wrapperView() const { return wrapperView_; }
    std::shared_ptr<PreviewItemManager> itemManager() const { return itemManager_.lock(); }
    void setItemManager(const std::shared_ptr<PreviewItemManager>& manager) {
        itemManager_ = manager;
    }
    int mode() const { return mode_; }
    void setMode(int mode) { mode_ = mode; }

    const std::shared_ptr<BarButtonItem>& barButtonActionItem() const {
        return barButtonActionItem_;
    }
    const std::shared_ptr<BarButtonItem>& barButtonDeleteItem() const {
        return barButtonDeleteItem_;
    }
    const std::shared_ptr<BarButtonItem>& barButtonMoveItem() const { return barButtonMoveItem_; }
    const std::shared_ptr<BarButtonItem>& openInAppBarButtonItem() const { return openInAppItem_; }
    int lastProgressChunk() const { return lastProgressChunk_.load(); }
    bool isSubscribedToProgress() const;
    // The wrapper's insets from the page, as configureMargins set them last.
    QMargins wrapperMargins() const { return margins_; }

    SizeClass horizontalSizeClass();
    SizeClass verticalSizeClass();

    virtual void refreshItem();
    // A fraction of the item's download changed; may be called on any thread.
    virtual void updateProgress(ItemProgress& progress);
    // A button to open the item in its app, for the bars; none by default.
    virtual QPushButton* openInAppNavControllerButton();

    void registerForProgress();
    void unregisterProgress();
    void observeFractionCompleted(ItemProgress& progress);

    void configureButtons();
    void setupConstraints();
    void configureMargins();
    int currentPseudoOrientation();

    void openInDefaultApp();
    void showWarningAndDeleteDocument();
    void showMoveTarget();
    void showDocumentActivities();

    void viewWillAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;

protected:
    void loadView() override;
    void viewDidLoad() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Observation {
        std::weak_ptr<ItemProgress> progress;
        ItemProgress::ObserverId id;
    };

    QPointer<QWidget> wrapperView_;
    QVBoxLayout* pageLayout_ = nullptr;
    std::weak_ptr<PreviewItemManager> itemManager_;
    int mode_ = 0;
    QMargins margins_;
    bool constraintsSetUp_ = false;
    std::shared_ptr<BarButtonItem> barButtonActionItem_;
    std::shared_ptr<BarButtonItem> barButtonDeleteItem_;
    std::shared_ptr<BarButtonItem> barButtonMoveItem_;
    std::shared_ptr<BarButtonItem> openInAppItem_;
    std::atomic<int> lastProgressChunk_{-1};

    mutable std::mutex progressMutex_;  // guards subscriber_, observations_
    ItemProgress::SubscriptionToken subscriber_;
    std::vector<Observation> observations_;
};

}  // namespace vl
