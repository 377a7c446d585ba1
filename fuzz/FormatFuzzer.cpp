// Feeds arbitrary formats with arbitrary argument lists to the formatter, through both the UTF-8
// and the UTF-16 format. Besides the sanitizers' checks it holds the two overloads to the same
// answer whenever the format is valid UTF-8.
//
// Input: byte 0 is the argument count (mod 9), the next bytes pick each argument's kind, eight
// bytes seed the numbers, and the rest (up to a NUL) is the format.

#include "platform/files/Error.h"
#include "platform/text/Format.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Described {
    QString description() const { return QStringLiteral("<Described>"); }
};

// Every kind of argument the formatter takes, made once per input from the seed bytes.
struct Arguments {
    explicit Arguments(std::uint64_t seed, const std::string& text)
        : integer(int(seed)),
          wide(std::int64_t(seed)),
          unsignedWide(seed),
          utf8(text),
          string(QString::fromUtf8(text.data(), qsizetype(text.size()))),
          bytes(text.data(), qsizetype(text.size())),
          url(QUrl::fromLocalFile(QStringLiteral("/tmp/") + string)),
          date(QDateTime::fromSecsSinceEpoch(qint64(seed % 4000000000ULL), Qt::UTC)),
          list{integer, string, url, QVariantList{real}},
          map{{string, list}, {QStringLiteral("k"), QVariant()}},
          error(QStringLiteral("Fuzz"), int(seed), {{Error::FilePathKey, string}}) {
        std::memcpy(&real, &seed, sizeof real);
    }

    std::vector<vl::FormatArg> pick(const std::uint8_t* kinds, std::size_t count) const {
        std::vector<vl::FormatArg> args;
        for (std::size_t i = 0; i < count; ++i) {
            switch (kinds[i] % 19) {
                case 0:
                    args.emplace_back(integer);
                    break;
                case 1:
                    args.emplace_back(wide);
                    break;
                case 2:
                    args.emplace_back(unsignedWide);
                    break;
                case 3:
                    args.emplace_back(real);
                    break;
                case 4:
                    args.emplace_back(integer % 2 == 0);
                    break;
                case 5:
                    args.emplace_back(utf8.c_str());
                    break;
                case 6:
                    args.emplace_back(string);
                    break;
                case 7:
                    args.emplace_back(nullptr);
                    break;
                case 8:
                    args.emplace_back(url);
                    break;
                case 9:
                    args.emplace_back(date);
                    break;
                case 10:
                    args.emplace_back(list);
                    break;
                case 11:
                    args.emplace_back(map);
                    break;
                case 12:
                    args.emplace_back(error);
                    break;
                case 13:
                    args.emplace_back(variant);
                    break;
                case 14:
                    args.emplace_back(bytes);
                    break;
                case 15:
                    args.emplace_back(none);
                    break;
                case 16:
                    args.emplace_back(&described);
                    break;
                case 17:
                    args.emplace_back(urls);
                    break;
                default:
                    args.emplace_back(static_cast<signed char>(integer));
                    break;
            }
        }
        return args;
    }

    using Error = vl::Error;
    int integer;
    std::int64_t wide;
    std::uint64_t unsignedWide;
    double real = 0;
    std::string utf8;
    QString string;
    QByteArray bytes;
    QUrl url;
    QDateTime date;
    QVariantList list;
    QVariantMap map;
    Error error;
    QVariant variant{QVariantList{1.5, QStringLiteral("x")}};
    std::optional<int> none;
    QList<QUrl> urls{url, QUrl()};
    Described described;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const std::size_t count = std::min<std::size_t>(data[0] % 9, size - 1);
    const std::uint8_t* kinds = data + 1;
    std::size_t offset = 1 + count;
    std::uint64_t seed = 0;
    const std::size_t seedBytes = std::min<std::size_t>(sizeof seed, size - offset);
    std::memcpy(&seed, data + offset, seedBytes);
    offset += seedBytes;

    const char* text = reinterpret_cast<const char*>(data + offset);
    const std::string format(text, strnlen(text, size - offset));
    const Arguments arguments(seed, format);
    const std::vector<vl::FormatArg> args = arguments.pick(kinds, count);

    const QString fromUtf8 = vl::vformat(format.c_str(), args);
    const QString utf16Format = QString::fromUtf8(format.data(), qsizetype(format.size()));
    const QString fromUtf16 = vl::vformat(utf16Format, args);
    if (utf16Format.toUtf8() == QByteArray::fromStdString(format) && fromUtf8 != fromUtf16) {
        std::abort();
    }

    // The variadic front end, with its compile-time argument list.
    (void)vl::format(format.c_str(), arguments.integer, arguments.real, arguments.string,
                     arguments.url, arguments.unsignedWide, nullptr);
    (void)vl::format(utf16Format, arguments.error, arguments.map, arguments.none, arguments.wide);
    return 0;
}
