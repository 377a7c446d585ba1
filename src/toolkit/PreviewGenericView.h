#pragma once

#include "toolkit/PreviewContentView.h"

class QLabel;

namespace vl {

// The page of an item the preview has no renderer for: its icon, name, kind and size.
class PreviewGenericView : public PreviewContentView {
    Q_OBJECT
public:
    explicit PreviewGenericView(const Url& url, QWidget* parent = nullptr);

    QString name() const;
    QString kind() const;
    // Empty for a folder or an item whose size can't be read.
    QString size() const;

    // A byte count as the item model shows it: "1 byte", "N bytes" below 1000, else SI units.
    static QString sizeText(qint64 bytes);

private:
    QLabel* name_ = nullptr;
    QLabel* kind_ = nullptr;
    QLabel* size_ = nullptr;
};

}  // namespace vl
