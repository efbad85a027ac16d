#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariant>

#include <array>
#include <concepts>
#include <optional>
#include <span>
#include <type_traits>
#include <variant>

/// Formatting with typed placeholders, for log lines and for texts that are not translated. Callable from any
/// thread.
///
///     %@        an object: text, address, list, date, variant; a missing optional prints as "(null)"
///     %i %d     an integer of up to 32 bits, %u the same without sign
///     %li %lu   an integer of any size, with and without sign
///     %f %.2f   a floating-point number
///     %p        a pointer
///     %%        a percent sign
///
/// The compiler checks the number and the types of the arguments.

/// The text that "%@" shows for an object.
QString describe(const QString& text);
QString describe(const QUrl& url);
QString describe(const QStringList& list);
QString describe(const QList<int>& list);
QString describe(const QByteArray& bytes);
QString describe(const QDateTime& date);
QString describe(const QVariant& value);

template <typename T>
QString describe(const std::optional<T>& value) {
    if (!value) return QStringLiteral("(null)");
    if constexpr (std::is_arithmetic_v<T>) {
        return QString::number(*value);
    } else {
        return describe(*value);
    }
}

namespace format_detail {

using Value = std::variant<QString, qint64, quint64, double, const void*>;

enum class Kind { Object, Signed32, Signed, Unsigned32, Unsigned, Floating, Pointer };

template <typename T>
concept Integer = std::integral<T> || std::is_enum_v<T>;

template <typename T>
constexpr bool fits(Kind kind) {
    using Plain = std::remove_cvref_t<T>;
    switch (kind) {
        case Kind::Object:
            return !std::is_arithmetic_v<Plain> && !std::is_pointer_v<std::decay_t<T>>;
        case Kind::Signed32:
            return std::integral<Plain> && sizeof(Plain) <= 4 &&
                   (std::signed_integral<Plain> || sizeof(Plain) < 4);
        case Kind::Signed:
            return std::integral<Plain> && (std::signed_integral<Plain> || sizeof(Plain) <= 4);
        case Kind::Unsigned32:
            return std::unsigned_integral<Plain> && sizeof(Plain) <= 4;
        case Kind::Unsigned:
            return std::unsigned_integral<Plain>;
        case Kind::Floating:
            return std::floating_point<Plain>;
        case Kind::Pointer:
            return std::is_pointer_v<std::decay_t<T>>;
    }
    return false;
}

struct Placeholder {
    Kind kind = Kind::Object;
    int precision = 6;
    size_t length = 0;  ///< Characters of the placeholder; 0: unknown placeholder.
};

/// Parses the placeholder that begins at text[0] == '%' (never "%%").
constexpr Placeholder readPlaceholder(const char* text) {
    Placeholder result;
    const char* at = text + 1;
    if (*at == '.') {
        result.precision = 0;
        for (++at; *at >= '0' && *at <= '9'; ++at)
            result.precision = result.precision * 10 + (*at - '0');
        if (*at != 'f') return result;
    }
    const bool wide = *at == 'l';
    if (wide) ++at;
    switch (*at) {
        case '@':
            result.kind = Kind::Object;
            break;
        case 'i':
        case 'd':
            result.kind = wide ? Kind::Signed : Kind::Signed32;
            break;
        case 'u':
            result.kind = wide ? Kind::Unsigned : Kind::Unsigned32;
            break;
        case 'f':
            result.kind = Kind::Floating;
            break;
        case 'p':
            result.kind = Kind::Pointer;
            break;
        default:
            return result;
    }
    if (wide && (*at == '@' || *at == 'f' || *at == 'p')) return result;
    result.length = static_cast<size_t>(at - text) + 1;
    return result;
}

/// Never defined: a call at compile time is an error that shows this name.
void theFormatAndItsArgumentsDoNotMatch();

template <typename... Args>
consteval void check(const char* text) {
    constexpr size_t count = sizeof...(Args);
    size_t used = 0;
    for (const char* at = text; *at; ++at) {
        if (*at != '%') continue;
        if (at[1] == '%') {
            ++at;
            continue;
        }
        const Placeholder placeholder = readPlaceholder(at);
        if (placeholder.length == 0 || used >= count) theFormatAndItsArgumentsDoNotMatch();
        const std::array<bool, count + 1> fitting{fits<Args>(placeholder.kind)..., false};
        if (!fitting[used]) theFormatAndItsArgumentsDoNotMatch();
        ++used;
        at += placeholder.length - 1;
    }
    if (used != count) theFormatAndItsArgumentsDoNotMatch();
}

template <typename T>
Value value(const T& argument) {
    using Plain = std::remove_cvref_t<T>;
    if constexpr (std::floating_point<Plain>) {
        return static_cast<double>(argument);
    } else if constexpr (std::unsigned_integral<Plain>) {
        return static_cast<quint64>(argument);
    } else if constexpr (std::integral<Plain>) {
        return static_cast<qint64>(argument);
    } else if constexpr (std::is_pointer_v<std::decay_t<T>>) {
        return static_cast<const void*>(argument);
    } else {
        return describe(argument);
    }
}

QString fill(const char* text, std::span<const Value> values);

}  // namespace format_detail

/// A format literal whose placeholders match `Args`; any other format does not compile.
template <typename... Args>
class BasicFormat {
public:
    template <typename Text>
    requires std::convertible_to<const Text&, const char*>
    consteval BasicFormat(const Text& text) : m_text(text) {  // NOLINT(google-explicit-constructor)
        format_detail::check<Args...>(m_text);
    }

    const char* text() const { return m_text; }

private:
    const char* m_text;
};

template <typename... Args>
using Format = BasicFormat<std::type_identity_t<Args>...>;

/// Replaces each placeholder of the UTF-8 format by its argument, in order.
template <typename... Args>
QString makeString(Format<Args...> format, const Args&... arguments) {
    const std::array<format_detail::Value, sizeof...(Args)> values{format_detail::value(arguments)...};
    return format_detail::fill(format.text(), values);
}
