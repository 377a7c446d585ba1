#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QLatin1String>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QUrl>
#include <QVariant>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vl {

// Anything that describes itself the way log lines show objects.
template <typename T>
concept Describable = requires(const T& object) {
    { object.description() } -> std::convertible_to<QString>;
};

// One argument of format(), type-erased. Scalars are held by value; everything else is held by
// pointer to the caller's object, which outlives the format() call that reads it, so building a
// FormatArg never allocates. Only the types below are accepted: any other argument type is a
// compile error rather than a silently wrong line.
class FormatArg {
public:
    enum class Kind : std::uint8_t {
        Null,      // nullptr, empty optional, null pointer, invalid variant: "(null)"
        Signed,    // integer_
        Unsigned,  // unsignedInteger_
        Double,    // real_
        Utf8,      // text_ (UTF-8 bytes; length_ < 0 when zero-terminated)
        Latin1,    // text_, length_
        Utf16,     // utf16_, length_
        Object,    // object_, describe_
    };

    template <typename T>
    requires(std::same_as<T, bool>) FormatArg(T value)
        : kind_(Kind::Signed), size_(sizeof(int)), integer_(value ? 1 : 0) {}

    template <typename T>
    requires((std::integral<T> && !std::same_as<T, bool>) || std::is_enum_v<T>) FormatArg(T value) {
        using U = typename std::conditional_t<std::is_enum_v<T>, std::underlying_type<T>,
                                              std::type_identity<T>>::type;
        size_ = sizeof(U) < sizeof(int) ? sizeof(int) : sizeof(U);
        if constexpr (std::is_signed_v<U>) {
            kind_ = Kind::Signed;
            integer_ = static_cast<std::int64_t>(value);
        } else {
            kind_ = Kind::Unsigned;
            unsignedInteger_ = static_cast<std::uint64_t>(value);
        }
    }

    template <typename T>
    requires(std::floating_point<T>) FormatArg(T value)
        : kind_(Kind::Double), real_(static_cast<double>(value)) {}

    FormatArg(std::nullptr_t) {}
    FormatArg(const char* text) : kind_(text ? Kind::Utf8 : Kind::Null), text_(text) {}
    FormatArg(const QByteArray& bytes)
        : kind_(Kind::Utf8), length_(bytes.size()), text_(bytes.constData()) {}
    FormatArg(const std::string& text)
        : kind_(Kind::Utf8), length_(qsizetype(text.size())), text_(text.data()) {}
    FormatArg(std::string_view text)
        : kind_(Kind::Utf8), length_(qsizetype(text.size())), text_(text.data()) {}
    FormatArg(QLatin1String text) : kind_(Kind::Latin1), length_(text.size()), text_(text.data()) {}
    FormatArg(const QString& text)
        : kind_(Kind::Utf16), length_(text.size()), utf16_(text.constData()) {}
    FormatArg(QStringView text) : kind_(Kind::Utf16), length_(text.size()), utf16_(text.data()) {}

    FormatArg(const QUrl& url) : FormatArg(&url, &describeUrl) {}
    FormatArg(const QDateTime& date) : FormatArg(&date, &describeDateTime) {}
    FormatArg(const QStringList& list) : FormatArg(&list, &describeStringList) {}
    FormatArg(const QVariantList& list) : FormatArg(&list, &describeVariantList) {}
    FormatArg(const QVariantMap& map) : FormatArg(&map, &describeVariantMap) {}
    // A variant holding a number or a string is taken as that number or string, so that "%d"
    // and "%.2f" work on it; anything else is described.
    FormatArg(const QVariant& value);

    // Any other list of arguments is shown as an array of their descriptions.
    template <typename T>
    requires std::constructible_from<FormatArg, const T&> FormatArg(const QList<T>& list)
        : FormatArg(&list, &describeList<QList<T>>) {}
    template <typename T>
    requires std::constructible_from<FormatArg, const T&> FormatArg(const std::vector<T>& list)
        : FormatArg(&list, &describeList<std::vector<T>>) {}

    template <Describable T>
    FormatArg(const T& object) : FormatArg(&object, &describeObject<T>) {}
    template <Describable T>
    FormatArg(const T* object) {
        if (object) {
            *this = FormatArg(*object);
        }
    }
    template <Describable T>
    FormatArg(const std::shared_ptr<T>& object) : FormatArg(object.get()) {}
    template <typename T>
    FormatArg(const std::optional<T>& value) {
        if (value) {
            *this = FormatArg(*value);
        }
    }

    Kind kind() const { return kind_; }
    // Size in bytes of an integer argument after the usual promotions (4 or 8).
    int integerSize() const { return size_; }
    std::int64_t integer() const { return integer_; }
    std::uint64_t unsignedInteger() const { return unsignedInteger_; }
    double real() const { return real_; }
    QStringView utf16() const {
        return kind_ == Kind::Utf16 ? QStringView(utf16_, length_) : QStringView();
    }
    bool isNumber() const {
        return kind_ == Kind::Signed || kind_ == Kind::Unsigned || kind_ == Kind::Double;
    }

    // Appends the argument as "%@" shows it.
    void appendDescription(QString& out) const;
    QString description() const;

private:
    // Appends the description of the object it was made for.
    using Describe = void (*)(QString& out, const void* object);

    static void describeUrl(QString& out, const void* url);
    static void describeDateTime(QString& out, const void* date);
    static void describeStringList(QString& out, const void* list);
    static void describeVariantList(QString& out, const void* list);
    static void describeVariantMap(QString& out, const void* map);
    static void describeVariant(QString& out, const void* value);

    FormatArg(const void* object, Describe describe)
        : kind_(Kind::Object), object_(object), describe_(describe) {}

    template <typename List>
    static void describeList(QString& out, const void* list) {
        const List& items = *static_cast<const List*>(list);
        out.append(QLatin1String("(\n"));
        for (std::size_t i = 0; i < std::size_t(items.size()); ++i) {
            appendArrayElement(out, FormatArg(items[i]), i + 1 == std::size_t(items.size()));
        }
        out.append(QLatin1Char(')'));
    }
    // One line of an array's description: indented, a string quoted when it isn't one word.
    static void appendArrayElement(QString& out, const FormatArg& element, bool last);

    template <Describable T>
    static void describeObject(QString& out, const void* object) {
        out.append(QString(static_cast<const T*>(object)->description()));
    }

    Kind kind_ = Kind::Null;
    std::uint8_t size_ = 0;
    qsizetype length_ = -1;
    union {
        std::int64_t integer_ = 0;
        std::uint64_t unsignedInteger_;
        double real_;
        const char* text_;
        const QChar* utf16_;
        const void* object_;
    };
    Describe describe_ = nullptr;

    friend QString describe(const QVariant& value);
};

}  // namespace vl
