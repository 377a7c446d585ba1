// Feeds arbitrary bytes to the tag list as the stored "CurioTagDict" value: JSON when the bytes
// parse as JSON (the form the synced store keeps), else the bytes as a string. Besides the
// sanitizers' checks it holds the published table to what the details screen relies on: every
// tag read back has a name and one of the eight tag colours, the list and the table agree, and a
// dictionary of another version gives no tags.

#include "logging/VLLogging.h"
#include "platform/cloud/KeyValueStore.h"
#include "services/FileTags.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

class OneValueStore : public vl::KeyValueStore {
public:
    QVariant value;

    QVariant objectForKey(const QString& key) const override {
        return key == vl::FileTags::TagDictionaryKey ? value : QVariant();
    }
    std::optional<QVariantMap> dictionaryForKey(const QString& key) const override {
        const QVariant object = objectForKey(key);
        return object.typeId() == QMetaType::QVariantMap ? std::optional(object.toMap())
                                                         : std::nullopt;
    }
    void setObject(const QVariant& object, const QString& key) override {
        if (key == vl::FileTags::TagDictionaryKey) {
            value = object;
        }
    }
    void removeObjectForKey(const QString& key) override { setObject({}, key); }
    QVariantMap dictionaryRepresentation() const override {
        return {{vl::FileTags::TagDictionaryKey, value}};
    }
    bool synchronize() override { return true; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static OneValueStore* const store = [] {
        VLSetLogLevel(3);  // the refusals are logged at 4 and 7; not a log line per input
        auto shared = std::make_shared<OneValueStore>();
        vl::KeyValueStore::setShared(shared);
        return shared.get();
    }();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    store->value = error.error == QJsonParseError::NoError ? document.toVariant()
                                                           : QVariant(QString::fromUtf8(bytes));

    vl::FileTags::tagColorsDidChange();
    const QStringList tags = vl::FileTags::allTags();
    const auto colors = vl::FileTags::tagColorsByTag();
    const QList<QColor>& table = vl::FileTags::tagBlipColors();
    for (const QString& tag : tags) {
        check(!tag.isNull());
        check(colors.contains(tag));
        check(table.contains(colors.value(tag)));
    }
    for (auto it = colors.cbegin(); it != colors.cend(); ++it) {
        check(tags.contains(it.key()));
    }
    const QVariantMap map = store->value.toMap();
    if (map.value(vl::FileTags::TagDictionaryVersionKey).toULongLong() != 2) {
        check(tags.isEmpty());
    }
    if (!tags.isEmpty()) {
        const QImage blips = vl::FileTags::blipWithTagsHeightScale(tags.mid(0, 8), 10, 1);
        check(blips.height() == 10 && blips.width() == 10 + 5 * (int(tags.mid(0, 8).size()) - 1));
    }
    return 0;
}
