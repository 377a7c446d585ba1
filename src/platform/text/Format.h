#pragma once

#include "platform/text/FormatArg.h"

#include <QString>
#include <QStringView>
#include <QVariant>

#include <array>
#include <span>

// The one formatter of log messages and localized texts: printf conversions with C's semantics
// (flags, width, precision, "*", length modifiers), "%@" for any argument (objects by their
// description, numbers as numbers, nullptr and empty values as "(null)"), and positional forms
// such as "%2$@" or "%1$*2$d". Arguments are checked at compile time (see FormatArg); at run time
// a conversion that doesn't fit its argument prints the argument as sensibly as it can, and a
// malformed directive or a missing argument prints the directive's own text. Widths and
// precisions are clamped to FormatMaxWidth.

namespace vl {

inline constexpr int FormatMaxWidth = 4096;

// The formatting engine over already type-erased arguments. A null format gives an empty string.
QString vformat(const char* utf8Format, std::span<const FormatArg> args);
QString vformat(QStringView format, std::span<const FormatArg> args);

// The UTF-8 format is the log calls' string literal: it is read in place, never converted first.
template <typename... Args>
QString format(const char* utf8Format, const Args&... args) {
    const std::array<FormatArg, sizeof...(Args)> list{FormatArg(args)...};
    return vformat(utf8Format, list);
}

template <typename... Args>
QString format(const QString& format, const Args&... args) {
    const std::array<FormatArg, sizeof...(Args)> list{FormatArg(args)...};
    return vformat(QStringView(format), list);
}

// A value shown the way "%@" shows it: arrays as "(\n    a,\n    b\n)", dictionaries as
// "{\n    key = value;\n}", dates as "2015-10-23 18:29:47 +0000", an invalid value as "(null)".
QString describe(const QVariant& value);

}  // namespace vl
