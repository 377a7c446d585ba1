#pragma once

#include <QFont>
#include <QString>
#include <QWidget>

class QLabel;

namespace vl {

// One row of an item's facts: a grey name, ending at the names' common edge, and a black value
// beside it that gives way first when space is short. Main thread only.
class FileInfoCell : public QWidget {
    Q_OBJECT
public:
    FileInfoCell();
    // `maxLines` lines of value at most; more than one wraps.
    FileInfoCell(const QString& name, const QString& value, int maxLines);

    // The rows' font, also used to measure their texts.
    static QFont font();
    // Between the name and the value.
    static constexpr int kSpacing = 10;

    QLabel* nameLabel() const { return nameLabel_; }
    QLabel* valueLabel() const { return valueLabel_; }
    int maxLines() const { return maxLines_; }

private:
    QLabel* nameLabel_;
    QLabel* valueLabel_;
    int maxLines_;
};

}  // namespace vl
