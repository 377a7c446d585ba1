#include "TagDictionary.h"

#include <QStringList>
#include <QVariantList>

namespace vl {

namespace {

const QStringList& colourNames() {
    static const QStringList names{
        QStringLiteral("none"),   QStringLiteral("grey"),   QStringLiteral("green"),
        QStringLiteral("purple"), QStringLiteral("blue"),   QStringLiteral("yellow"),
        QStringLiteral("red"),    QStringLiteral("orange"),
    };
    return names;
}

}  // namespace

std::optional<quint32> TagDictionary::colourIndex(const QString& name) {
    QString lower = name.trimmed().toLower();
    if (lower == QLatin1String("gray")) {
        lower = QStringLiteral("grey");
    }
    const qsizetype index = colourNames().indexOf(lower);
    if (index >= 0) {
        return quint32(index);
    }
    bool ok = false;
    const quint32 number = lower.toUInt(&ok);
    return ok ? std::optional<quint32>(number) : std::nullopt;
}

QString TagDictionary::colourName(quint32 index) {
    return index < quint32(colourNames().size()) ? colourNames().at(int(index))
                                                 : QString::number(index);
}

QVariantMap TagDictionary::toValue(const QList<Tag>& tags) {
    QVariantList entries;
    for (const Tag& tag : tags) {
        entries.append(
            QVariantMap{{QStringLiteral("n"), tag.name}, {QStringLiteral("l"), tag.colour}});
    }
    return {{VersionKey, Version}, {TagsKey, entries}};
}

std::optional<QList<TagDictionary::Tag>> TagDictionary::fromValue(const QVariant& value) {
    const QVariantMap map = value.toMap();
    if (map.value(VersionKey).toUInt() != Version) {
        return std::nullopt;
    }
    QList<Tag> tags;
    for (const QVariant& entry : map.value(TagsKey).toList()) {
        const QVariantMap fields = entry.toMap();
        tags.append({fields.value(QStringLiteral("n")).toString(),
                     fields.value(QStringLiteral("l")).toUInt()});
    }
    return tags;
}

}  // namespace vl
