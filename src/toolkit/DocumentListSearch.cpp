#include "toolkit/DocumentListSearch.h"

#include "toolkit/TextField.h"

#include "platform/dispatch/Dispatch.h"
#include "platform/text/Strings.h"
#include "toolkit/DocumentListItemDelegate.h"
#include "toolkit/DocumentListModel.h"
#include "toolkit/DocumentListReader.h"
#include "toolkit/TextField.h"

#include <QBoxLayout>
#include <QLineEdit>
#include <QListView>

namespace vl {

namespace {

const QString kSeparator = QStringLiteral(" \u25B8 ");

void walk(const Url& folder, const QString& location, const QString& text, int limit,
          QList<DocumentListEntry>* found) {
    const QList<DocumentListEntry> rows = DocumentListReader::readFolder(folder);
    // The matches of this folder share one record of where they are.
    const auto where = std::make_shared<const DocumentListEntry::Folder>(
        DocumentListEntry::Folder{Url::fromPath(folder.path(), true), location});
    QList<const DocumentListEntry*> subfolders;
    for (const DocumentListEntry& row : rows) {
        if (found->size() >= limit) {
            return;
        }
        if (row.displayName().contains(text, Qt::CaseInsensitive)) {
            DocumentListEntry match = row;
            match.folder = where;
            found->append(std::move(match));
        }
        if (row.isFolder) {
            subfolders.append(&row);
        }
    }
    for (const DocumentListEntry* sub : subfolders) {
        walk(sub->url(), location + kSeparator + sub->displayName(), text, limit, found);
    }
}

}  // namespace

DocumentListSearch::DocumentListSearch(Url folder, QString folderTitle,
                                       std::function<QList<DocumentListEntry>()> folderRows,
                                       TapHandler onTap)
    : folder_(std::move(folder)),
      folderTitle_(std::move(folderTitle)),
      folderRows_(std::move(folderRows)),
      onTap_(std::move(onTap)),
      results_(std::make_shared<DocumentListModel>()) {}

DocumentListSearch::~DocumentListSearch() = default;

QList<DocumentListEntry> DocumentListSearch::matchesBelow(const Url& folder,
                                                          const QString& folderTitle,
                                                          const QString& text, int limit) {
    QList<DocumentListEntry> found;
    for (const DocumentListEntry& row : DocumentListReader::readFolder(folder)) {
        if (row.isFolder) {
            walk(row.url(), folderTitle + kSeparator + row.displayName(), text, limit, &found);
        }
        if (found.size() >= limit) {
            break;
        }
    }
    return found;
}

void DocumentListSearch::install(QWidget* container, QListView* list, QWidget* trailing) {
    list_ = list;
    auto* layout = qobject_cast<QBoxLayout*>(container->layout());
    auto* field = new TextField(container);
    field->setClearButtonShownWhileEditing(true);
    field->setReturnKeyType(TextField::ReturnKeyType::Search);
    field->setAutocapitalizationType(TextField::AutocapitalizationType::None);
    field->setAutocorrectionType(TextField::AutocorrectionType::No);
    field_ = field;
    field_->setObjectName(QStringLiteral("searchField"));
    field_->setPlaceholderText(Strings::localized("Search"));
    field_->setAccessibleName(Strings::localized("Search"));
    field_->setStyleSheet(QStringLiteral(
        "QLineEdit { margin: 6px 8px; padding: 4px 8px; border: none; border-radius: 8px; "
        "background: #eeeef0; }"));
    resultsView_ = new QListView(container);
    resultsView_->setObjectName(QStringLiteral("searchResults"));
    resultsView_->setModel(results_.get());
    resultsView_->setItemDelegate(new DocumentListItemDelegate(resultsView_));
    resultsView_->setFrameShape(QFrame::NoFrame);
    resultsView_->setIconSize(QSize(32, 32));
    resultsView_->setSpacing(2);
    resultsView_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    resultsView_->setSelectionMode(QAbstractItemView::NoSelection);
    resultsView_->setAccessibleName(Strings::localized("Search Results"));
    resultsView_->hide();
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 8, 0);
    row->addWidget(field_, 1);
    if (trailing) {
        row->addWidget(trailing);
    }
    layout->insertLayout(layout->indexOf(list), row);
    layout->insertWidget(layout->indexOf(list), resultsView_);

    connect(field_, &QLineEdit::textChanged, this,
            [this](const QString& text) { setSearchText(text); });
    connect(resultsView_, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (!index.isValid()) {
            return;
        }
        // On the next turn: what the tap leads to may end the search or drop the whole list,
        // this view included, which must not happen inside its own click.
        const QPointer<DocumentListSearch> self(this);
        Dispatch::mainQueue()->async([self, entry = results_->entryAt(index.row())] {
            if (self && self->onTap_) {
                self->onTap_(entry);
            }
        });
    });
}

bool DocumentListSearch::isShowingResults() const {
    return !text_.isEmpty();
}

QList<Url> DocumentListSearch::resultURLs() const {
    QList<Url> urls;
    for (const DocumentListEntry& entry : results_->entries()) {
        urls.append(entry.url());
    }
    return urls;
}

void DocumentListSearch::setSearchText(const QString& given) {
    const QString text = given.trimmed();
    if (text == text_) {
        return;
    }
    text_ = text;
    const quint64 generation = ++*generation_;
    if (field_ && field_->text().trimmed() != text) {
        field_->setText(text);
    }
    if (text.isEmpty()) {
        results_->setEntries({});
        if (resultsView_) {
            resultsView_->hide();
        }
        if (list_) {
            list_->show();
        }
        return;
    }
    // The folder's own rows at once, while the walk of its subfolders runs.
    QList<DocumentListEntry> own;
    for (const DocumentListEntry& row : folderRows_()) {
        if (row.displayName().contains(text, Qt::CaseInsensitive)) {
            own.append(row);
        }
    }
    showResults(own);
    const QPointer<DocumentListSearch> self(this);
    const std::shared_ptr<quint64> current = generation_;
    Dispatch::globalQueue(QualityOfService::UserInitiated)
        ->async([self, current, generation, own, folder = folder_, title = folderTitle_, text] {
            QList<DocumentListEntry> all = own;
            all.append(matchesBelow(folder, title, text, MaxResults - int(own.size())));
            Dispatch::mainQueue()->async([self, current, generation, all = std::move(all)]() {
                // A newer text supersedes this walk.
                if (self && *current == generation) {
                    self->showResults(all);
                }
            });
        });
}

void DocumentListSearch::showResults(QList<DocumentListEntry> entries) {
    results_->setEntries(std::move(entries));
    if (list_) {
        list_->hide();
    }
    if (resultsView_) {
        resultsView_->show();
    }
}

void DocumentListSearch::endSearch() {
    setSearchText(QString());
    if (field_) {
        field_->clear();
    }
}

}  // namespace vl
