#include "korva/preset/json_tree.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <unordered_set>

namespace korva::tool {
namespace {

constexpr std::size_t longestQuote = 60;
constexpr std::size_t longestReason = 200;

bool isContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// At most `length` bytes, and no part of a character.
std::string_view shortened(std::string_view text, std::size_t length) {
    if (text.size() <= length) {
        return text;
    }
    while (length > 0 && isContinuation(text[length])) {
        --length;
    }
    return text.substr(0, length);
}

/// The parser's own words without its name, its number and the position, which is told apart.
std::string reasonOf(std::string_view what) {
    for (const std::string_view lead : {"syntax error", "number overflow"}) {
        if (const std::size_t at = what.find(lead); at != std::string_view::npos) {
            what.remove_prefix(at);
            break;
        }
    }
    return std::string(shortened(what, longestReason));
}

/// Builds the tree as the parser goes. Its methods are those that the parser calls, and give whether it is
/// to go on.
class TreeBuilder {
public:
    TreeBuilder(std::string_view parsed, std::vector<TextFault>& found) : text(parsed), faults(found) {}

    bool null() { return add(JsonValue{}) != nullptr; }
    bool boolean(bool value) { return add({value}) != nullptr; }
    bool number_integer(std::int64_t value) {
        return (value == 0 ? add({-0.0}) : add({value})) != nullptr;  // Zero has come with a sign.
    }
    bool number_unsigned(std::uint64_t value) {
        constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        const bool fits = value <= largest;
        return (fits ? add({static_cast<std::int64_t>(value)}) : add({static_cast<double>(value)})) !=
               nullptr;
    }
    bool number_float(double value, const std::string& /*written*/) { return add({value}) != nullptr; }
    bool string(std::string& value) { return add({std::move(value)}) != nullptr; }
    bool binary(std::vector<std::uint8_t>& /*value*/) { return false; }  // JSON text has none.

    bool start_object(std::size_t /*size*/) { return open({JsonValue::Members{}}); }
    bool end_object() { return close(); }
    bool start_array(std::size_t /*size*/) { return open({JsonValue::Array{}}); }
    bool end_array() { return close(); }

    bool key(std::string& name) {
        if (!path.back().keys.insert(name).second) {
            faults.push_back({place(), "the key " + inQuotes(name) + " appears twice"});
        }
        std::get<JsonValue::Members>(path.back().value->content).emplace_back(std::move(name), JsonValue{});
        return true;
    }

    bool parse_error(std::size_t position, const std::string& /*lastToken*/, const std::exception& error) {
        TextFault fault{.place = {}, .message = reasonOf(error.what())};
        const std::string_view before = text.substr(0, position == 0 ? 0 : position - 1);
        fault.line = 1 + static_cast<std::size_t>(std::ranges::count(before, '\n'));
        const std::string_view line = before.substr(before.rfind('\n') + 1);
        fault.column = 1 + static_cast<std::size_t>(
                               std::ranges::count_if(line, [](char c) { return !isContinuation(c); }));
        faults.push_back(std::move(fault));
        return false;
    }

    JsonValue take() { return std::move(root); }

private:
    struct Open {
        JsonValue* value;
        std::unordered_set<std::string> keys{};  ///< Of an object, so far.
    };

    /// Nothing if there are too many.
    JsonValue* add(JsonValue value) {
        if (++values > maxJsonValues) {
            faults.push_back({{}, fmt::format("more than {} values in all", maxJsonValues)});
            return nullptr;
        }
        if (path.empty()) {
            root = std::move(value);
            return &root;
        }
        if (auto* const array = std::get_if<JsonValue::Array>(&path.back().value->content)) {
            return &array->emplace_back(std::move(value));
        }
        JsonValue& last = std::get<JsonValue::Members>(path.back().value->content).back().second;
        last = std::move(value);
        return &last;
    }

    bool open(JsonValue value) {
        if (path.size() == maxJsonDepth) {
            faults.push_back({place(), fmt::format("nested deeper than {} levels", maxJsonDepth)});
            return false;
        }
        // What is open grows only at its end, which waits for this one: the pointer stays good.
        JsonValue* const opened = add(std::move(value));
        if (opened == nullptr) {
            return false;
        }
        path.push_back({opened});
        return true;
    }
    bool close() {
        path.pop_back();
        return true;
    }

    /// The way to the value that is open, from the tree itself.
    [[nodiscard]] std::string place() const {
        std::string way;
        for (std::size_t i = 0; i + 1 < path.size(); ++i) {
            if (const auto* const array = path[i].value->as<JsonValue::Array>()) {
                way += fmt::format("[{}]", array->size() - 1);
            } else {
                way += way.empty() ? "" : ".";
                way += shortened(std::get<JsonValue::Members>(path[i].value->content).back().first,
                                 longestQuote);
            }
        }
        return way;
    }

    std::string_view text;
    std::vector<TextFault>& faults;
    JsonValue root;
    std::vector<Open> path;  ///< What is open, from the root on.
    std::size_t values = 0;
};

struct Wording {
    std::string operator()(std::nullptr_t) const { return "null"; }
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return fmt::format("{}", value); }
    std::string operator()(const std::string& value) const { return "the text " + inQuotes(value); }
    std::string operator()(const JsonValue::Array&) const { return "an array"; }
    std::string operator()(const JsonValue::Members&) const { return "an object"; }
};

}  // namespace

std::optional<JsonValue> parseJson(std::string_view text, std::vector<TextFault>& faults) {
    TreeBuilder builder(text, faults);
    if (!nlohmann::json::sax_parse(text, &builder)) {
        return std::nullopt;
    }
    return builder.take();
}

std::string valueText(const JsonValue& value) {
    return std::visit(Wording(), value.content);
}

std::string inQuotes(std::string_view text) {
    const std::string_view part = shortened(text, longestQuote);
    return fmt::format("'{}{}'", part, part.size() < text.size() ? "..." : "");
}

}  // namespace korva::tool
