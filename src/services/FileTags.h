#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace vl {

// The user's tags and their colours, as the desktop file manager of the same account keeps them
// in the synced key-value store under "CurioTagDict", and the coloured dots drawn before tag names.
// Class-level operations only.
//
// The table and the name list are replaced whole on each refresh, which runs on the thread that
// posts the store's change; readers on any thread take a copy.
class FileTags {
public:
    FileTags() = delete;

    static inline const QString TagDictionaryKey = QStringLiteral("CurioTagDict");
    static inline const QString TagDictionaryVersionKey = QStringLiteral("CurioTagDictVersion");
    static inline const QString TagsKey = QStringLiteral("CurioTags");
    static constexpr quint64 TagDictionaryVersion = 2;

    // What one stored dictionary says: a colour for each name, and the names in the user's order.
    struct TagTable {
        QHash<QString, QColor> colorsByTag;
        QStringList tags;
    };

    // The first call starts following the store's external changes and reads the dictionary.
    static QHash<QString, QColor> tagColorsByTag();
    static QStringList allTags();
    // Index 0 is "no colour" and also stands for every index of 8 or more.
    static const QList<QColor>& tagBlipColors();
    // Reads the stored dictionary again and publishes it.
    static void tagColorsDidChange();
    // The table of one stored "CurioTagDict" value (anything, as read from the store), with the
    // log lines of a wrong version or an empty dictionary. Entries without a name are skipped.
    static TagTable tagTableFromDictionary(const QVariant& dictionary);

    // A transparent image of `imageSize` with a dot of the tag's colour whose bounding square has
    // its corner at `offset` and `blipHeight` as its side. Null for a null tag; a tag without a
    // colour gets an empty image.
    static QImage blipWithTagImageSizeBlipHeightOffset(const QString& tag, const QSizeF& imageSize,
                                                       qreal blipHeight, const QPointF& offset);
    // Overlapping dots, each half a height right of the one before, with a lighter rim. Null for
    // no tags.
    static QImage blipWithTagsHeightScale(const QStringList& tags, qreal height, qreal scale);
};

}  // namespace vl
