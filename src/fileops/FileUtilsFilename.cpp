#include "fileops/FileUtils.h"

#include <unicode/uchar.h>

#include <cstring>

namespace vl {

namespace {

// The newer of two Unicode versions counts as assigned only up to this one.
constexpr UVersionInfo kIllegalAfter = {3, 2, 0, 0};

bool isNewlineCodePoint(char32_t c) {
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isTrimmedCodePoint(char32_t c) {
    if ((c >= 0x0A && c <= 0x0D) || c == 0x85) {
        return true;
    }
    const int8_t type = u_charType(UChar32(c));
    return type == U_SPACE_SEPARATOR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR;
}

// The code point at `i` and its length in UTF-16 units; a lone surrogate stands for itself.
char32_t codePointAt(QStringView name, qsizetype i, qsizetype* length) {
    const char16_t unit = name[i].unicode();
    if (QChar::isHighSurrogate(unit) && i + 1 < name.size() && name[i + 1].isLowSurrogate()) {
        *length = 2;
        return QChar::surrogateToUcs4(unit, name[i + 1].unicode());
    }
    *length = 1;
    return unit;
}

}  // namespace

bool FileUtils::isIllegalFilenameCodePoint(char32_t c) {
    // U+FDD0..U+FDEF and the last two code points of every plane.
    if (u_hasBinaryProperty(UChar32(c), UCHAR_NONCHARACTER_CODE_POINT)) {
        return true;
    }
    // A lone surrogate is no character: no file system name can hold it.
    if (c >= 0xD800 && c <= 0xDFFF) {
        return true;
    }
    UVersionInfo age;
    u_charAge(UChar32(c), age);
    const bool unassigned = age[0] == 0 && age[1] == 0 && age[2] == 0 && age[3] == 0;
    return unassigned || std::memcmp(age, kIllegalAfter, sizeof age) > 0;
}

bool FileUtils::isControlOrFormatCodePoint(char32_t c) {
    const int8_t type = u_charType(UChar32(c));
    return type == U_CONTROL_CHAR || type == U_FORMAT_CHAR;
}

QString FileUtils::trimmedFilename(const QString& name) {
    qsizetype begin = 0, end = name.size();
    while (begin < end && isTrimmedCodePoint(name[begin].unicode())) {
        ++begin;
    }
    while (end > begin && isTrimmedCodePoint(name[end - 1].unicode())) {
        --end;
    }
    return name.mid(begin, end - begin);
}

bool FileUtils::isValidFilename(const QString& name) {
    if (name.isEmpty() || name.startsWith(QLatin1Char('.'))) {
        return false;
    }
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char(':'))) {
        return false;
    }
    // Tests 4 to 6 in their order, each over the whole name, so that the first failing test is the
    // one that decides, as a log line or a debugger would report it.
    const QStringView view(name);
    auto any = [&](auto&& refused) {
        for (qsizetype i = 0, length = 0; i < view.size(); i += length) {
            if (refused(codePointAt(view, i, &length))) {
                return true;
            }
        }
        return false;
    };
    return !any(isIllegalFilenameCodePoint) && !any(isControlOrFormatCodePoint) &&
           !any(isNewlineCodePoint);
}

}  // namespace vl
