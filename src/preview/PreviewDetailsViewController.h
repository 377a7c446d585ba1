#pragma once

#include "preview/FileInfoStackView.h"
#include "preview/PreviewBaseViewController.h"
#include "preview/ThumbnailImageView.h"

#include <QLabel>
#include <QList>
#include <QPointer>
#include <QPushButton>
#include <QString>

class QBoxLayout;

namespace vl {

class HairlineView;
class RenamePrompt;

// One item's details: its picture, its name (tap it to rename the item), and its facts. Stacked
// and centred in a portrait or narrow page, side by side (picture left, details right and
// left-aligned) in a landscape one, switching as the window's shape changes. Main thread only.
class PreviewDetailsViewController : public PreviewBaseViewController {
    Q_OBJECT
public:
    PreviewDetailsViewController();
    ~PreviewDetailsViewController() override;

    static constexpr int kStackSpacing = 15;
    static constexpr int kFilenameSpacing = 7;
    static constexpr int kDetailsInset = 8;

    ThumbnailImageView* thumbnailView() const { return thumbnailView_; }
    QLabel* filenameTextField() const { return filenameTextField_; }
    FileInfoStackView* fileInfoView() const { return fileInfoView_; }
    QPushButton* openInAppButton() const { return openInAppButton_; }
    const QList<HairlineView*>& hairlineViews() const { return hairlineViews_; }
    const std::shared_ptr<RenamePrompt>& renamePrompt() const { return renamePrompt_; }
    QString originalFilename() const { return originalFilename_; }
    // The arrangement shown: true side by side, false stacked.
    bool isSideBySide() const { return sideBySide_; }

    void refreshItem() override;
    QPushButton* openInAppNavControllerButton() override;
    bool shouldDisplayOpenInAppButtonInView();
    void adjustViewsForOrientation(int orientation);
    void filenameWasTapped();
    // The window changed shape: the arrangement follows on the next turn of the main queue.
    void viewWillTransitionToSize(const QSize& size);
    void viewWillAppear(bool animated) override;

protected:
    void viewDidLoad() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setupViewsAndConstraints();
    QWidget* buildVerticalStackWithSubviewsSpacing(const QList<QWidget*>& subviews, int spacing);

    QPointer<ThumbnailImageView> thumbnailView_;
    QPointer<QLabel> filenameTextField_;
    std::shared_ptr<RenamePrompt> renamePrompt_;
    QPointer<FileInfoStackView> fileInfoView_;
    QString originalFilename_;
    QPointer<QWidget> mainStackView_;
    QBoxLayout* mainLayout_ = nullptr;
    QPointer<QWidget> filenameStackView_;
    QPointer<QWidget> fileDetailsView_;
    QList<HairlineView*> hairlineViews_;
    QPointer<QPushButton> openInAppButton_;
    bool sideBySide_ = false;
    QPointer<QWidget> watchedWindow_;
};

}  // namespace vl
