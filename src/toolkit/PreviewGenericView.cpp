#include "toolkit/PreviewGenericView.h"

#include "platform/files/ContentTypeRegistry.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "toolkit/ToolkitIcons.h"

#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace vl {

PreviewGenericView::PreviewGenericView(const Url& url, QWidget* parent)
    : PreviewContentView(url, parent) {
    const QFileInfo info(url.path());
    const bool folder = info.isDir();
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.identifierForFileName(url.lastPathComponent(), folder);

    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("previewGeneric"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->setSpacing(8);
    layout->addStretch(1);

    auto* icon = new QLabel(page);
    icon->setObjectName(QStringLiteral("previewGenericIcon"));
    icon->setPixmap(ToolkitIcons::icon(registry.iconName(type), registry.genericIconName(type))
                        .pixmap(128, 128));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);
    layout->addSpacing(12);

    name_ = new QLabel(url.lastPathComponent(), page);
    name_->setObjectName(QStringLiteral("previewGenericName"));
    name_->setAlignment(Qt::AlignCenter);
    name_->setWordWrap(true);
    name_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont font = name_->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.4);
    name_->setFont(font);
    layout->addWidget(name_);

    QString kindText = registry.localizedDescription(type);
    if (kindText.isEmpty()) {
        kindText = folder ? Strings::localized("Folder") : Strings::localized("Document");
    }
    kind_ = new QLabel(kindText, page);
    kind_->setObjectName(QStringLiteral("previewGenericKind"));
    kind_->setAlignment(Qt::AlignCenter);
    kind_->setStyleSheet(QStringLiteral("color: #6d6d72;"));
    layout->addWidget(kind_);

    size_ = new QLabel(folder || !info.exists() ? QString() : sizeText(info.size()), page);
    size_->setObjectName(QStringLiteral("previewGenericSize"));
    size_->setAlignment(Qt::AlignCenter);
    size_->setStyleSheet(QStringLiteral("color: #6d6d72;"));
    size_->setVisible(!size_->text().isEmpty());
    layout->addWidget(size_);
    layout->addStretch(2);

    icon->setAccessibleName(kindText);
    page->setAccessibleName(url.lastPathComponent());
    page->setAccessibleDescription(
        size_->text().isEmpty() ? kindText
                                : format(Strings::localized("%@, %@"), kindText, size_->text()));
    setContentWidget(page);
    markReady();
}

QString PreviewGenericView::name() const {
    return name_->text();
}

QString PreviewGenericView::kind() const {
    return kind_->text();
}

QString PreviewGenericView::size() const {
    return size_->text();
}

QString PreviewGenericView::sizeText(qint64 bytes) {
    if (bytes == 1) {
        return Strings::localized("1 byte");
    }
    if (bytes < 1000) {
        return format(Strings::localized("%lld bytes"), static_cast<long long>(bytes));
    }
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

}  // namespace vl
