// Feeds arbitrary bytes to the placeholder reader as the content of a cloud-only item's record.
// Besides the sanitizers' checks it holds an accepted record to a stable form: written out and
// read back, it gives the same JSON again, as a record that another device rewrote would.

#include "FuzzInputFile.h"

#include "drive/store/PlaceholderFile.h"

#include <QJsonDocument>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FuzzInputFile* const file = new FuzzInputFile("record.json");
    vl::Error error;
    const std::optional<vl::PlaceholderFile> record =
        vl::PlaceholderFile::read(file->hold(data, size), &error);
    if (!record) {
        // A refusal always says why, in the file-error domain.
        if (error.domain() != vl::Error::FileErrorDomain || error.code() == 0) {
            std::abort();
        }
        return 0;
    }
    if (record->name.isEmpty()) {
        std::abort();
    }
    const QJsonObject written = record->toJson();
    const std::optional<vl::PlaceholderFile> again = vl::PlaceholderFile::fromJson(written);
    if (!again || again->toJson() != written) {
        std::abort();
    }
    // The written form parses as JSON and reads back as the same record.
    const QByteArray bytes = QJsonDocument(written).toJson(QJsonDocument::Compact);
    const std::optional<vl::PlaceholderFile> reread =
        vl::PlaceholderFile::fromJson(QJsonDocument::fromJson(bytes).object());
    if (!reread || reread->toJson() != written) {
        std::abort();
    }
    return 0;
}
