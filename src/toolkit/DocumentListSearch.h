#pragma once

#include "platform/files/Url.h"
#include "toolkit/DocumentListEntry.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

#include <QLineEdit>
#include <QListView>
class QWidget;

namespace vl {

class DocumentListModel;

// The search of a folder list: a search field above the list and, while it holds text, a results
// list in place of the folder's rows. The folder's own matching rows show at once; the matches in
// its subfolders follow from a walk on a background queue, each with its location. Main thread
// only, except matchesBelow().
class DocumentListSearch : public QObject {
    Q_OBJECT
public:
    using TapHandler = std::function<void(const DocumentListEntry& entry)>;
    // At most this many results; a walk stops there.
    static constexpr int MaxResults = 500;

    // `folderRows` gives the folder's rows as currently read; a tap on a result goes to `onTap`.
    DocumentListSearch(Url folder, QString folderTitle,
                       std::function<QList<DocumentListEntry>()> folderRows, TapHandler onTap);
    ~DocumentListSearch() override;

    // Puts the field (with `trailing` beside it, when given) and the results list into the
    // layout of `container`, above `list`, which is hidden while results are shown.
    void install(QWidget* container, QListView* list, QWidget* trailing = nullptr);

    QLineEdit* searchField() const { return field_; }
    QListView* resultsView() const { return resultsView_; }
    bool isShowingResults() const;
    QList<Url> resultURLs() const;
    // Searches for `text` (what typing in the field does); empty text ends the search.
    void setSearchText(const QString& text);
    // Clears the field and shows the folder again.
    void endSearch();

    // Every item below `folder` (not the folder's own rows) whose name contains `text`, case
    // ignored, with its location under `folderTitle`; at most `limit`. Safe on any thread.
    static QList<DocumentListEntry> matchesBelow(const Url& folder, const QString& folderTitle,
                                                 const QString& text, int limit);

private:
    void showResults(QList<DocumentListEntry> entries);

    const Url folder_;
    const QString folderTitle_;
    std::function<QList<DocumentListEntry>()> folderRows_;
    TapHandler onTap_;
    std::shared_ptr<DocumentListModel> results_;
    QPointer<QLineEdit> field_;
    QPointer<QListView> resultsView_;
    QPointer<QListView> list_;
    QString text_;
    std::shared_ptr<quint64> generation_ = std::make_shared<quint64>(0);
};

}  // namespace vl
