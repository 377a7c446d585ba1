#pragma once

#include <QList>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace vl {

// The user's tag list as the desktop file manager keeps it in the key-value store:
// "CurioTagDict" = {"CurioTagDictVersion": 2, "CurioTags": [{"n": name, "l": colour index}]}.
class TagDictionary {
public:
    static inline const QString StoreKey = QStringLiteral("CurioTagDict");
    static inline const QString VersionKey = QStringLiteral("CurioTagDictVersion");
    static inline const QString TagsKey = QStringLiteral("CurioTags");
    static constexpr int Version = 2;

    struct Tag {
        QString name;
        quint32 colour = 0;
    };

    // "red", "Orange", "gray", ... or a number; absent for anything else. Colour indexes: 0 none,
    // 1 grey, 2 green, 3 purple, 4 blue, 5 yellow, 6 red, 7 orange.
    static std::optional<quint32> colourIndex(const QString& name);
    static QString colourName(quint32 index);

    static QVariantMap toValue(const QList<Tag>& tags);
    // The tags of a stored value; absent when it is not a version-2 dictionary.
    static std::optional<QList<Tag>> fromValue(const QVariant& value);
};

}  // namespace vl
