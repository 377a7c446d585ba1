// Feeds arbitrary names to the filename rule and the trimming in front of it, and holds them to
// what the prompts rely on: trimming takes only blanks and breaks from the ends and is done after
// one pass; the rule agrees with a slow reference over the trimmed name's code points built on
// Qt's Unicode tables (a second copy of the history ICU gives the rule); and a valid name never
// starts with "." nor holds "/" or ":".
//
// Input: the bytes are UTF-16 code units, two by two (little-endian), so that lone surrogates and
// every code point can occur.

#include "fileops/FileUtils.h"

#include <QString>

#include <cstdint>
#include <cstdlib>

namespace {

bool trimmable(char32_t c) {
    const QChar::Category category = QChar::category(c);
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || category == QChar::Separator_Space ||
           category == QChar::Separator_Line || category == QChar::Separator_Paragraph;
}

bool referenceRefuses(char32_t c) {
    if (c == '/' || c == ':' || (c >= 0xD800 && c <= 0xDFFF) || QChar::isNonCharacter(c)) {
        return true;
    }
    const QChar::UnicodeVersion version = QChar::unicodeVersion(c);
    if (version == QChar::Unicode_Unassigned || version > QChar::Unicode_3_2) {
        return true;
    }
    const QChar::Category category = QChar::category(c);
    return category == QChar::Other_Control || category == QChar::Other_Format || c == 0x2028 ||
           c == 0x2029 || c == 0x85 || (c >= 0x0A && c <= 0x0D);
}

bool referenceIsValid(const QString& name) {
    if (name.isEmpty() || name.front() == QLatin1Char('.')) {
        return false;
    }
    for (qsizetype i = 0; i < name.size(); ++i) {
        char32_t c = name[i].unicode();
        if (name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(name[i], name[i + 1]);
            ++i;
        }
        if (referenceRefuses(c)) {
            return false;
        }
    }
    return true;
}

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QString name;
    name.reserve(qsizetype(size / 2));
    for (size_t i = 0; i + 1 < size; i += 2) {
        name.append(QChar(char16_t(data[i] | (data[i + 1] << 8))));
    }

    const QString trimmed = vl::FileUtils::trimmedFilename(name);
    check(vl::FileUtils::trimmedFilename(trimmed) == trimmed);
    const qsizetype start = name.indexOf(trimmed);
    check(trimmed.isEmpty() || start >= 0);
    if (!trimmed.isEmpty()) {
        // Only trimmable units were taken from either end (a unit of a pair is never one).
        for (qsizetype i = 0; i < start; ++i) {
            check(trimmable(name[i].unicode()));
        }
        for (qsizetype i = start + trimmed.size(); i < name.size(); ++i) {
            check(trimmable(name[i].unicode()));
        }
        check(!trimmable(trimmed.front().unicode()) && !trimmable(trimmed.back().unicode()));
    }

    const bool valid = vl::FileUtils::isValidFilename(trimmed);
    check(valid == referenceIsValid(trimmed));
    check(vl::FileUtils::isValidFilename(name) == referenceIsValid(name));
    if (valid) {
        check(!trimmed.startsWith(QLatin1Char('.')) && !trimmed.contains(QLatin1Char('/')) &&
              !trimmed.contains(QLatin1Char(':')));
    }
    return 0;
}
