#include "platform/text/Format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>

namespace vl {

namespace {

// One parsed directive. Width and precision are -1 when absent.
struct Directive {
    bool minus = false;
    bool plus = false;
    bool space = false;
    bool hash = false;
    bool zero = false;
    int width = -1;
    int precision = -1;
    int lengthBits = 0;  // 8 for "hh", 16 for "h": C narrows the value to that size
    char conversion = 0;
};

enum class ConversionClass { Unknown, Signed, Unsigned, Character, Real, Text };

ConversionClass classify(char conversion) {
    switch (conversion) {
        case 'd':
        case 'i':
        case 'D':
            return ConversionClass::Signed;
        case 'u':
        case 'U':
        case 'x':
        case 'X':
        case 'o':
        case 'O':
            return ConversionClass::Unsigned;
        case 'c':
        case 'C':
            return ConversionClass::Character;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return ConversionClass::Real;
        case 's':
        case 'S':
        case '@':
            return ConversionClass::Text;
        default:
            return ConversionClass::Unknown;
    }
}

template <typename Ch>
char asciiOf(Ch c) {
    const auto u = static_cast<std::make_unsigned_t<Ch>>(c);
    return u < 0x80 ? static_cast<char>(u) : '\0';
}

void appendText(QString& out, const char* text, qsizetype length) {
    for (qsizetype i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) {
            out.append(QString::fromUtf8(text, length));
            return;
        }
    }
    out.append(QLatin1String(text, length));
}

void appendText(QString& out, const char16_t* text, qsizetype length) {
    out.append(reinterpret_cast<const QChar*>(text), length);
}

void appendPadding(QString& out, qsizetype count) {
    if (count > 0) {
        out.append(QString(count, QLatin1Char(' ')));
    }
}

// Text conversions and anything printed by its description: precision cuts (never inside a
// surrogate pair), width pads with blanks.
void appendPadded(QString& out, QStringView text, const Directive& directive, bool applyPrecision) {
    if (applyPrecision && directive.precision >= 0 && text.size() > directive.precision) {
        qsizetype cut = directive.precision;
        if (cut > 0 && text.at(cut - 1).isHighSurrogate()) {
            --cut;
        }
        text = text.left(cut);
    }
    const qsizetype padding = directive.width - text.size();
    if (!directive.minus) {
        appendPadding(out, padding);
    }
    out.append(text);
    if (directive.minus) {
        appendPadding(out, padding);
    }
}

void appendDescribed(QString& out, const FormatArg& arg, const Directive& directive,
                     bool applyPrecision) {
    if (directive.width < 0 && (directive.precision < 0 || !applyPrecision)) {
        arg.appendDescription(out);
    } else if (arg.kind() == FormatArg::Kind::Utf16) {
        appendPadded(out, arg.utf16(), directive, applyPrecision);
    } else {
        appendPadded(out, arg.description(), directive, applyPrecision);
    }
}

// The C directive for snprintf: flags, width, precision, then the length and conversion given.
void buildCFormat(char* buffer, const Directive& directive, const char* lengthAndConversion) {
    char* p = buffer;
    *p++ = '%';
    if (directive.minus)
        *p++ = '-';
    if (directive.plus)
        *p++ = '+';
    if (directive.space)
        *p++ = ' ';
    if (directive.hash)
        *p++ = '#';
    if (directive.zero)
        *p++ = '0';
    if (directive.width >= 0) {
        p = std::to_chars(p, p + 8, directive.width).ptr;
    }
    if (directive.precision >= 0) {
        *p++ = '.';
        p = std::to_chars(p, p + 8, directive.precision).ptr;
    }
    const std::size_t rest = std::strlen(lengthAndConversion);
    std::memcpy(p, lengthAndConversion, rest + 1);
}

template <typename Value>
void appendPrintf(QString& out, const char* cFormat, Value value) {
    char buffer[160];
    const int length = std::snprintf(buffer, sizeof buffer, cFormat, value);
    if (length < 0) {
        return;
    }
    if (std::size_t(length) < sizeof buffer) {
        out.append(QLatin1String(buffer, length));
        return;
    }
    std::string large(std::size_t(length) + 1, '\0');
    std::snprintf(large.data(), large.size(), cFormat, value);
    out.append(QLatin1String(large.data(), length));
}

std::int64_t clampToInt64(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= 9223372036854775807.0) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value <= -9223372036854775808.0) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

template <typename T>
void appendDecimal(QString& out, T value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(QLatin1String(buffer, result.ptr - buffer));
}

char cConversion(char conversion) {
    switch (conversion) {
        case 'D':
            return 'd';
        case 'U':
            return 'u';
        case 'O':
            return 'o';
        default:
            return conversion;
    }
}

// Integer conversions print the argument's own value (whatever its C type): the length
// modifier only matters where C makes it visible, in the two's complement of a negative value
// under %u/%x/%o and in the narrowing of "h" and "hh".
void appendInteger(QString& out, const FormatArg& arg, const Directive& directive,
                   bool signedConversion) {
    bool isSigned = true;
    std::int64_t signedValue = 0;
    std::uint64_t unsignedValue = 0;
    int bits = arg.integerSize() * 8;
    switch (arg.kind()) {
        case FormatArg::Kind::Signed:
            signedValue = arg.integer();
            break;
        case FormatArg::Kind::Unsigned:
            isSigned = false;
            unsignedValue = arg.unsignedInteger();
            break;
        default:
            signedValue = clampToInt64(arg.real());
            bits = 64;
            break;
    }
    if (directive.lengthBits != 0) {
        bits = directive.lengthBits;
        const std::uint64_t raw = isSigned ? std::uint64_t(signedValue) : unsignedValue;
        if (signedConversion) {
            signedValue =
                bits == 8 ? std::int64_t(std::int8_t(raw)) : std::int64_t(std::int16_t(raw));
            isSigned = true;
        } else {
            unsignedValue = bits == 8 ? std::uint8_t(raw) : std::uint16_t(raw);
            isSigned = false;
        }
    }
    const bool plain = !directive.minus && !directive.plus && !directive.space && !directive.hash &&
                       !directive.zero && directive.width < 0 && directive.precision < 0;
    char cFormat[32];
    const char conversion = cConversion(directive.conversion);
    if (signedConversion) {
        if (isSigned || unsignedValue <= std::uint64_t(std::numeric_limits<std::int64_t>::max())) {
            const long long value = isSigned ? signedValue : std::int64_t(unsignedValue);
            if (plain) {
                appendDecimal(out, value);
                return;
            }
            buildCFormat(cFormat, directive, "lld");
            appendPrintf(out, cFormat, value);
        } else {
            if (plain) {
                appendDecimal(out, unsignedValue);
                return;
            }
            buildCFormat(cFormat, directive, "llu");
            appendPrintf(out, cFormat, static_cast<unsigned long long>(unsignedValue));
        }
        return;
    }
    if (isSigned) {
        unsignedValue = std::uint64_t(signedValue);
        if (bits < 64) {
            unsignedValue &= (std::uint64_t(1) << bits) - 1;
        }
    }
    if (plain && conversion == 'u') {
        appendDecimal(out, unsignedValue);
        return;
    }
    const char lengthAndConversion[] = {'l', 'l', conversion, '\0'};
    buildCFormat(cFormat, directive, lengthAndConversion);
    appendPrintf(out, cFormat, static_cast<unsigned long long>(unsignedValue));
}

void appendReal(QString& out, const FormatArg& arg, const Directive& directive) {
    double value = 0;
    switch (arg.kind()) {
        case FormatArg::Kind::Signed:
            value = double(arg.integer());
            break;
        case FormatArg::Kind::Unsigned:
            value = double(arg.unsignedInteger());
            break;
        default:
            value = arg.real();
            break;
    }
    char cFormat[32];
    const char lengthAndConversion[] = {directive.conversion, '\0'};
    buildCFormat(cFormat, directive, lengthAndConversion);
    appendPrintf(out, cFormat, value);
}

// The argument as a whole number: a real is truncated, an unsigned one beyond int64 saturates.
std::int64_t integerOf(const FormatArg& arg) {
    switch (arg.kind()) {
        case FormatArg::Kind::Signed:
            return arg.integer();
        case FormatArg::Kind::Unsigned:
            return std::int64_t(std::min<std::uint64_t>(
                arg.unsignedInteger(), std::uint64_t(std::numeric_limits<std::int64_t>::max())));
        default:
            return clampToInt64(arg.real());
    }
}

void appendCharacter(QString& out, const FormatArg& arg, const Directive& directive) {
    std::int64_t code = integerOf(arg);
    if (directive.lengthBits == 8) {
        code = std::uint8_t(code);
    }
    QChar units[2];
    qsizetype count = 0;
    if (code == 0) {
        // A NUL is left out rather than carried into the log line.
    } else if (code < 0 || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) {
        units[count++] = QChar(QChar::ReplacementCharacter);
    } else if (code >= 0x10000) {
        units[count++] = QChar(QChar::highSurrogate(char32_t(code)));
        units[count++] = QChar(QChar::lowSurrogate(char32_t(code)));
    } else {
        units[count++] = QChar(char16_t(code));
    }
    appendPadded(out, QStringView(units, count), directive, false);
}

void appendArgument(QString& out, const FormatArg& arg, const Directive& directive,
                    ConversionClass kind) {
    if (kind == ConversionClass::Text || !arg.isNumber()) {
        appendDescribed(out, arg, directive, kind == ConversionClass::Text);
        return;
    }
    switch (kind) {
        case ConversionClass::Signed:
            appendInteger(out, arg, directive, true);
            break;
        case ConversionClass::Unsigned:
            appendInteger(out, arg, directive, false);
            break;
        case ConversionClass::Real:
            appendReal(out, arg, directive);
            break;
        case ConversionClass::Character:
            appendCharacter(out, arg, directive);
            break;
        default:
            break;
    }
}

constexpr int NoNumber = -1;

// Reads a decimal number at p, saturating well above every limit that applies to it.
template <typename Ch>
int readNumber(const Ch*& p, const Ch* end) {
    if (p == end || asciiOf(*p) < '0' || asciiOf(*p) > '9') {
        return NoNumber;
    }
    int value = 0;
    while (p < end && asciiOf(*p) >= '0' && asciiOf(*p) <= '9') {
        if (value < 100000000) {
            value = value * 10 + (asciiOf(*p) - '0');
        }
        ++p;
    }
    return value;
}

// A 1-based position written as "N$" at p; 0 (and p unchanged) when there is none.
template <typename Ch>
int readPosition(const Ch*& p, const Ch* end) {
    const Ch* q = p;
    const int number = readNumber(q, end);
    if (number == NoNumber || q == end || asciiOf(*q) != '$') {
        return 0;
    }
    p = q + 1;
    return number == 0 ? -1 : number;  // "%0$" names no argument
}

template <typename Ch>
class Engine {
public:
    Engine(QString& out, std::span<const FormatArg> args) : out_(out), args_(args) {}

    void run(const Ch* p, const Ch* end) {
        while (p < end) {
            const Ch* percent = p;
            while (percent < end && *percent != Ch('%')) {
                ++percent;
            }
            appendText(out_, p, percent - p);
            if (percent == end) {
                return;
            }
            p = directive(percent, end);
        }
    }

private:
    // Formats the directive that starts at the '%' and returns where the text goes on. What
    // can't be formatted is copied as it stands.
    const Ch* directive(const Ch* percent, const Ch* end) {
        const Ch* p = percent + 1;
        if (p < end && *p == Ch('%')) {
            out_.append(QLatin1Char('%'));
            return p + 1;
        }
        Directive directive;
        const int position = readPosition(p, end);
        bool ok = position >= 0;
        for (; ok && p < end; ++p) {
            const char c = asciiOf(*p);
            if (c == '-') {
                directive.minus = true;
            } else if (c == '+') {
                directive.plus = true;
            } else if (c == ' ') {
                directive.space = true;
            } else if (c == '#') {
                directive.hash = true;
            } else if (c == '0') {
                directive.zero = true;
            } else if (c != '\'') {
                break;
            }
        }
        if (ok && p < end && *p == Ch('*')) {
            ++p;
            int width = 0;
            ok = starArgument(p, end, width);
            if (width < 0) {
                directive.minus = true;
                width = width == std::numeric_limits<int>::min() ? FormatMaxWidth : -width;
            }
            directive.width = std::min(width, FormatMaxWidth);
        } else if (ok) {
            const int width = readNumber(p, end);
            directive.width = width == NoNumber ? -1 : std::min(width, FormatMaxWidth);
        }
        if (ok && p < end && *p == Ch('.')) {
            ++p;
            if (p < end && *p == Ch('*')) {
                ++p;
                int precision = 0;
                ok = starArgument(p, end, precision);
                directive.precision = precision < 0 ? -1 : std::min(precision, FormatMaxWidth);
            } else {
                const int precision = readNumber(p, end);
                directive.precision =
                    precision == NoNumber ? 0 : std::min(precision, FormatMaxWidth);
            }
        }
        if (ok) {
            readLength(p, end, directive);
        }
        if (p == end) {
            appendText(out_, percent, end - percent);
            return end;
        }
        directive.conversion = asciiOf(*p);
        // A non-ASCII character ends the directive without being part of it, so that a UTF-8
        // sequence is never cut in two.
        if (directive.conversion != '\0') {
            ++p;
        }
        const ConversionClass kind = classify(directive.conversion);
        const FormatArg* arg = nullptr;
        if (ok && kind != ConversionClass::Unknown) {
            arg = argument(position);
        }
        if (!arg) {
            appendText(out_, percent, p - percent);
            return p;
        }
        appendArgument(out_, *arg, directive, kind);
        return p;
    }

    // The argument named by a position, or the next one in order; null when there is none.
    const FormatArg* argument(int position) {
        const std::size_t index = position > 0 ? std::size_t(position - 1) : next_++;
        return index < args_.size() ? &args_[index] : nullptr;
    }

    // A "*" width or precision: the int argument (at "N$" or the next one).
    bool starArgument(const Ch*& p, const Ch* end, int& value) {
        const int position = readPosition(p, end);
        if (position < 0) {
            return false;
        }
        const FormatArg* arg = argument(position);
        if (!arg || !arg->isNumber()) {
            return false;
        }
        std::int64_t number = integerOf(*arg);
        number = std::clamp<std::int64_t>(number, -FormatMaxWidth, FormatMaxWidth);
        value = int(number);
        return true;
    }

    static void readLength(const Ch*& p, const Ch* end, Directive& directive) {
        while (p < end) {
            const char c = asciiOf(*p);
            if (c == 'h') {
                directive.lengthBits = directive.lengthBits == 16 ? 8 : 16;
            } else if (c != 'l' && c != 'L' && c != 'q' && c != 'j' && c != 'z' && c != 't') {
                return;
            }
            ++p;
        }
    }

    QString& out_;
    std::span<const FormatArg> args_;
    std::size_t next_ = 0;
};

qsizetype reserveFor(qsizetype formatLength, std::size_t argumentCount) {
    return formatLength + qsizetype(argumentCount) * 24;
}

}  // namespace

QString vformat(const char* utf8Format, std::span<const FormatArg> args) {
    QString out;
    if (!utf8Format) {
        return out;
    }
    const qsizetype length = qsizetype(std::strlen(utf8Format));
    out.reserve(reserveFor(length, args.size()));
    Engine<char>(out, args).run(utf8Format, utf8Format + length);
    return out;
}

QString vformat(QStringView format, std::span<const FormatArg> args) {
    QString out;
    out.reserve(reserveFor(format.size(), args.size()));
    const char16_t* begin = format.utf16();
    Engine<char16_t>(out, args).run(begin, begin + format.size());
    return out;
}

}  // namespace vl
