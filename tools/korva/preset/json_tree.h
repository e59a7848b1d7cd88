// JSON text as a tree in which everything has its place in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace korva::tool {

/// One value. Numbers are whole if they are written so and fit 64 bits with a sign, else floating: -0 is,
/// which keeps its sign.
struct JsonValue {
    using Array = std::vector<JsonValue>;
    using Members = std::vector<std::pair<std::string, JsonValue>>;

    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, Array, Members> content = nullptr;

    template <typename T>
    [[nodiscard]] const T* as() const noexcept {
        return std::get_if<T>(&content);
    }
};

/// Something wrong in a text: a place in its tree such as "parameters[3].floats", empty for all of it, or
/// a line and a column, both from 1.
struct TextFault {
    std::string place;
    std::string message;
    std::size_t line = 0;  ///< 0: the place says it.
    std::size_t column = 0;

    friend bool operator==(const TextFault&, const TextFault&) = default;
};

/// Arrays and objects in one another at most.
inline constexpr std::size_t maxJsonDepth = 16;

/// Values at most, those of all arrays and objects together: several times what a preset can have.
inline constexpr std::size_t maxJsonValues = 300'000;

/// Nothing if the text isn't JSON, too deep or too much; then the last of the faults says why. A key that
/// appears twice in an object is a fault of the tree, whose first value counts. A UTF-8 byte order mark is
/// allowed.
[[nodiscard]] std::optional<JsonValue> parseJson(std::string_view text, std::vector<TextFault>& faults);

/// What a value is, for messages: "text", "5", "an array".
[[nodiscard]] std::string valueText(const JsonValue& value);

/// A text of the user's in quotes, shortened if it is long.
[[nodiscard]] std::string inQuotes(std::string_view text);

}  // namespace korva::tool
