#include "platform/text/FormatArg.h"

#include "platform/files/Error.h"
#include "platform/text/Format.h"

#include <QDebug>
#include <QVariantHash>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace vl {

namespace {

void appendAscii(QString& out, const char* text, qsizetype length) {
    out.append(QLatin1String(text, length));
}

template <typename T>
void appendNumber(QString& out, T value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    appendAscii(out, buffer, result.ptr - buffer);
}

void appendUtf8(QString& out, const char* text, qsizetype length) {
    if (length < 0) {
        length = qsizetype(std::strlen(text));
    }
    for (qsizetype i = 0; i < length; ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) {
            out.append(QString::fromUtf8(text, length));
            return;
        }
    }
    appendAscii(out, text, length);
}

// Strings inside arrays and dictionaries are quoted unless they are one plain word, so that
// "a, b" as one element can't be mistaken for two.
bool needsQuotes(QStringView text) {
    if (text.isEmpty()) {
        return true;
    }
    for (QChar c : text) {
        const char16_t u = c.unicode();
        const bool plain = (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') ||
                           (u >= '0' && u <= '9') || u == '_' || u == '.' || u == '$' || u == '/' ||
                           u > 0x7f;
        if (!plain) {
            return true;
        }
    }
    return false;
}

void appendQuotedIfNeeded(QString& out, QStringView text) {
    if (!needsQuotes(text)) {
        out.append(text);
        return;
    }
    out.append(QLatin1Char('"'));
    for (QChar c : text) {
        switch (c.unicode()) {
            case '"':
                out.append(QLatin1String("\\\""));
                break;
            case '\\':
                out.append(QLatin1String("\\\\"));
                break;
            case '\n':
                out.append(QLatin1String("\\n"));
                break;
            case '\t':
                out.append(QLatin1String("\\t"));
                break;
            default:
                out.append(c);
        }
    }
    out.append(QLatin1Char('"'));
}

void appendIndent(QString& out, int indent) {
    out.append(QString(indent, QLatin1Char(' ')));
}

// A local file's URL is by far the most common argument of a log line; QUrl::toString() is slow
// enough to matter there, and for a plain "file:///path" the path alone says the same.
void appendUrl(QString& out, const QUrl& url) {
    if (url.isEmpty()) {
        out.append(QLatin1String("(null)"));
        return;
    }
    if (url.isLocalFile() && !url.hasQuery() && !url.hasFragment() && url.host().isEmpty()) {
        const QString path = url.path(QUrl::PrettyDecoded);
        // toString() encodes these in a path where path() shows them as they are.
        const auto encodedByToString = [](QChar c) {
            return c.unicode() < 0x80 && std::strchr("\"#<>?\\^{|}", char(c.unicode())) &&
                   c.unicode() != 0;
        };
        if (path.startsWith(QLatin1Char('/')) &&
            std::none_of(path.cbegin(), path.cend(), encodedByToString)) {
            out.append(QLatin1String("file://"));
            out.append(path);
            return;
        }
    }
    out.append(url.toString());
}

void appendDateTime(QString& out, const QDateTime& date) {
    if (!date.isValid()) {
        out.append(QLatin1String("(null)"));
        return;
    }
    out.append(date.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    out.append(QLatin1String(" +0000"));
}

constexpr int IndentStep = 4;

void appendVariant(QString& out, const QVariant& value, int indent, bool nested);

template <typename List>
void appendArray(QString& out, const List& list, int indent) {
    out.append(QLatin1String("(\n"));
    for (qsizetype i = 0; i < list.size(); ++i) {
        appendIndent(out, indent + IndentStep);
        if constexpr (std::is_same_v<typename List::value_type, QString>) {
            appendQuotedIfNeeded(out, list.at(i));
        } else {
            appendVariant(out, list.at(i), indent + IndentStep, true);
        }
        out.append(i + 1 < list.size() ? QLatin1String(",\n") : QLatin1String("\n"));
    }
    appendIndent(out, indent);
    out.append(QLatin1Char(')'));
}

template <typename Map>
void appendDictionary(QString& out, const Map& map, int indent) {
    out.append(QLatin1String("{\n"));
    // A hash has no order of its own; sorted keys keep lines comparable between runs.
    QStringList keys = map.keys();
    if constexpr (!std::is_same_v<Map, QVariantMap>) {
        keys.sort();
    }
    for (const QString& key : keys) {
        appendIndent(out, indent + IndentStep);
        appendQuotedIfNeeded(out, key);
        out.append(QLatin1String(" = "));
        appendVariant(out, map.value(key), indent + IndentStep, true);
        out.append(QLatin1String(";\n"));
    }
    appendIndent(out, indent);
    out.append(QLatin1Char('}'));
}

void appendVariant(QString& out, const QVariant& value, int indent, bool nested) {
    const int type = value.metaType().id();
    switch (type) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            out.append(QLatin1String("(null)"));
            return;
        case QMetaType::QString:
            if (nested) {
                appendQuotedIfNeeded(out, *static_cast<const QString*>(value.constData()));
            } else {
                out.append(*static_cast<const QString*>(value.constData()));
            }
            return;
        case QMetaType::QStringList:
            appendArray(out, *static_cast<const QStringList*>(value.constData()), indent);
            return;
        case QMetaType::QVariantList:
            appendArray(out, *static_cast<const QVariantList*>(value.constData()), indent);
            return;
        case QMetaType::QVariantMap:
            appendDictionary(out, *static_cast<const QVariantMap*>(value.constData()), indent);
            return;
        case QMetaType::QVariantHash:
            appendDictionary(out, *static_cast<const QVariantHash*>(value.constData()), indent);
            return;
        case QMetaType::QUrl:
            appendUrl(out, *static_cast<const QUrl*>(value.constData()));
            return;
        case QMetaType::QDateTime:
            appendDateTime(out, *static_cast<const QDateTime*>(value.constData()));
            return;
        default:
            break;
    }
    if (value.metaType() == QMetaType::fromType<Error>()) {
        out.append(static_cast<const Error*>(value.constData())->description());
        return;
    }
    const FormatArg scalar(value);
    if (scalar.kind() != FormatArg::Kind::Object) {
        scalar.appendDescription(out);
    } else if (value.canConvert<QVariantList>()) {
        appendArray(out, value.toList(), indent);
    } else if (value.canConvert<QVariantMap>()) {
        appendDictionary(out, value.toMap(), indent);
    } else if (value.canConvert<QString>()) {
        out.append(value.toString());
    } else {
        QDebug(&out).nospace().noquote() << value;
    }
}

}  // namespace

FormatArg::FormatArg(const QVariant& value) {
    const QMetaType type = value.metaType();
    switch (type.id()) {
        case QMetaType::UnknownType:
        case QMetaType::Nullptr:
            return;
        case QMetaType::Bool:
            *this = FormatArg(value.toBool());
            return;
        case QMetaType::Char:
        case QMetaType::SChar:
        case QMetaType::Short:
        case QMetaType::Int:
        case QMetaType::Long:
        case QMetaType::LongLong:
            kind_ = Kind::Signed;
            size_ = std::uint8_t(type.sizeOf() < int(sizeof(int)) ? sizeof(int) : type.sizeOf());
            integer_ = value.toLongLong();
            return;
        case QMetaType::UChar:
        case QMetaType::UShort:
        case QMetaType::UInt:
        case QMetaType::ULong:
        case QMetaType::ULongLong:
        case QMetaType::Char16:
        case QMetaType::Char32:
            kind_ = Kind::Unsigned;
            size_ = std::uint8_t(type.sizeOf() < int(sizeof(int)) ? sizeof(int) : type.sizeOf());
            unsignedInteger_ = value.toULongLong();
            return;
        case QMetaType::Float:
        case QMetaType::Double:
            kind_ = Kind::Double;
            real_ = value.toDouble();
            return;
        case QMetaType::QString:
            *this = FormatArg(*static_cast<const QString*>(value.constData()));
            return;
        case QMetaType::QByteArray:
            *this = FormatArg(*static_cast<const QByteArray*>(value.constData()));
            return;
        default:
            kind_ = Kind::Object;
            object_ = &value;
            describe_ = &describeVariant;
    }
}

void FormatArg::appendDescription(QString& out) const {
    switch (kind_) {
        case Kind::Null:
            out.append(QLatin1String("(null)"));
            break;
        case Kind::Signed:
            appendNumber(out, integer_);
            break;
        case Kind::Unsigned:
            appendNumber(out, unsignedInteger_);
            break;
        case Kind::Double:
            appendNumber(out, real_);
            break;
        case Kind::Utf8:
            appendUtf8(out, text_, length_);
            break;
        case Kind::Latin1:
            out.append(QLatin1String(text_, length_));
            break;
        case Kind::Utf16:
            out.append(utf16_, length_);
            break;
        case Kind::Object:
            describe_(out, object_);
            break;
    }
}

QString FormatArg::description() const {
    if (kind_ == Kind::Utf16) {
        return QString(utf16_, length_);
    }
    QString out;
    appendDescription(out);
    return out;
}

void FormatArg::appendArrayElement(QString& out, const FormatArg& element, bool last) {
    appendIndent(out, IndentStep);
    switch (element.kind_) {
        case Kind::Utf16:
            appendQuotedIfNeeded(out, element.utf16());
            break;
        case Kind::Utf8:
        case Kind::Latin1:
            appendQuotedIfNeeded(out, element.description());
            break;
        default: {
            // A nested collection's lines move in by one level.
            const QString text = element.description();
            QString indented = text;
            indented.replace(QLatin1Char('\n'), QLatin1String("\n    "));
            out.append(indented);
        }
    }
    out.append(last ? QLatin1String("\n") : QLatin1String(",\n"));
}

void FormatArg::describeUrl(QString& out, const void* url) {
    appendUrl(out, *static_cast<const QUrl*>(url));
}

void FormatArg::describeDateTime(QString& out, const void* date) {
    appendDateTime(out, *static_cast<const QDateTime*>(date));
}

void FormatArg::describeStringList(QString& out, const void* list) {
    appendArray(out, *static_cast<const QStringList*>(list), 0);
}

void FormatArg::describeVariantList(QString& out, const void* list) {
    appendArray(out, *static_cast<const QVariantList*>(list), 0);
}

void FormatArg::describeVariantMap(QString& out, const void* map) {
    appendDictionary(out, *static_cast<const QVariantMap*>(map), 0);
}

void FormatArg::describeVariant(QString& out, const void* value) {
    appendVariant(out, *static_cast<const QVariant*>(value), 0, false);
}

QString describe(const QVariant& value) {
    QString out;
    FormatArg::describeVariant(out, &value);
    return out;
}

}  // namespace vl
