// The catalogue's notation, read by the compiler.
//
//     2..6: f*3 b (policy 1, priority 50); 7: w=512 z2048
//
// Rows are parted by semicolons. A row is a number or a range of them, a colon, and the fields in their
// order: a letter each, with `*n` for n alike and `=v` for a default that isn't zero. Attributes that aren't
// zero follow in brackets, and count for each number of the row.
//
//     b Bool   c Byte8   h Word16A   w Word16B   i Int32   u UInt32   f Float32   zN Bytes, N of them
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "params/catalogue.h"

namespace korva::params {

/// One row as it is written.
struct CatalogueRow {
    std::int32_t firstId = 0;
    std::int32_t lastId = 0;
    std::uint32_t category = 0;
    std::uint32_t sourcePolicy = 0;
    std::uint32_t applyPriority = 0;
    std::string_view fields;

    [[nodiscard]] constexpr std::size_t idCount() const noexcept {
        return static_cast<std::size_t>(lastId - firstId + 1);
    }
};

/// Reads one token after another. Where the text isn't what it should be it throws, which a constant
/// expression can't: the build ends there.
class CatalogueReader {
public:
    constexpr explicit CatalogueReader(std::string_view text) noexcept : rest(text) {}

    [[nodiscard]] constexpr bool atEnd() {
        skipSpace();
        return rest.empty();
    }
    [[nodiscard]] constexpr bool take(std::string_view token) {
        skipSpace();
        if (!rest.starts_with(token)) {
            return false;
        }
        rest.remove_prefix(token.size());
        return true;
    }
    constexpr void expect(std::string_view token) {
        if (!take(token)) {
            throw "the catalogue lacks a token";
        }
    }
    [[nodiscard]] constexpr std::int64_t number() {
        const bool isNegative = take("-");
        if (rest.empty() || !isDigit(rest.front())) {
            throw "the catalogue lacks a number";
        }
        std::int64_t value = 0;
        for (; !rest.empty() && isDigit(rest.front()); rest.remove_prefix(1)) {
            value = value * 10 + (rest.front() - '0');
        }
        return isNegative ? -value : value;
    }
    /// Up to the first of `ends`, which stays.
    [[nodiscard]] constexpr std::string_view until(std::string_view ends) {
        skipSpace();
        const std::string_view taken = rest.substr(0, rest.find_first_of(ends));
        rest.remove_prefix(taken.size());
        return taken;
    }
    [[nodiscard]] constexpr char letter() {
        skipSpace();
        if (rest.empty()) {
            throw "the catalogue lacks a field";
        }
        const char c = rest.front();
        rest.remove_prefix(1);
        return c;
    }
    [[nodiscard]] constexpr CatalogueRow row() {
        CatalogueRow row;
        row.firstId = static_cast<std::int32_t>(number());
        row.lastId = take("..") ? static_cast<std::int32_t>(number()) : row.firstId;
        if (row.lastId < row.firstId) {
            throw "a range of the catalogue runs backwards";
        }
        expect(":");
        row.fields = until("(;");
        if (take("(")) {
            attributes(row);
        }
        if (!atEnd()) {
            expect(";");
        }
        return row;
    }

private:
    static constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

    constexpr void skipSpace() {
        while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\n')) {
            rest.remove_prefix(1);
        }
    }
    constexpr void attributes(CatalogueRow& row) {
        do {
            std::uint32_t& attribute = take("category") ? row.category
                                       : take("policy") ? row.sourcePolicy
                                                        : (expect("priority"), row.applyPriority);
            attribute = static_cast<std::uint32_t>(number());
        } while (take(","));
        expect(")");
    }

    std::string_view rest;
};

/// The field of a letter, without what follows it.
[[nodiscard]] constexpr ParamField fieldOfLetter(char letter) {
    switch (letter) {
        case 'b':
            return {ParamFieldType::Bool, 1, 0, 0};
        case 'c':
            return {ParamFieldType::Byte8, 1, 0, 0};
        case 'h':
            return {ParamFieldType::Word16A, 2, 0, 0};
        case 'w':
            return {ParamFieldType::Word16B, 2, 0, 0};
        case 'i':
            return {ParamFieldType::Int32, 4, 0, 0};
        case 'u':
            return {ParamFieldType::UInt32, 4, 0, 0};
        case 'f':
            return {ParamFieldType::Float32, 4, 0, 0};
        case 'z':
            return {ParamFieldType::Bytes, 0, 1, 0};
    }
    throw "a letter of the catalogue is no field";
}

/// Calls `found(field)` for every field of a row, in order.
template <class Found>
constexpr void forEachField(std::string_view text, Found found) {
    CatalogueReader reader(text);
    while (!reader.atEnd()) {
        ParamField field = fieldOfLetter(reader.letter());
        if (field.isBytes != 0) {
            field.length = static_cast<std::uint64_t>(reader.number());
            field.defaultValue = field.length;
        } else if (reader.take("=")) {
            const std::int64_t value = reader.number();
            field.defaultValue = field.type == ParamFieldType::Float32
                                     ? std::bit_cast<std::uint32_t>(static_cast<float>(value))
                                     : static_cast<std::uint64_t>(value);
        }
        for (std::int64_t left = reader.take("*") ? reader.number() : 1; left > 0; --left) {
            found(field);
        }
    }
}

/// Calls `found(row)` for every row of the texts, in order.
template <class Found, class... Text>
constexpr void forEachRow(Found found, const Text&... texts) {
    const auto readText = [&](std::string_view text) {
        for (CatalogueReader reader(text); !reader.atEnd();) {
            found(reader.row());
        }
    };
    (readText(texts), ...);
}

/// The fields of all rows of `Texts`, each row's once.
template <const auto&... Texts>
inline constexpr auto catalogueFields = [] {
    constexpr std::size_t count = [] {
        std::size_t fields = 0;
        forEachRow([&](const CatalogueRow& row) { forEachField(row.fields, [&](auto&) { ++fields; }); },
                   Texts...);
        return fields;
    }();
    std::array<ParamField, count> fields{};
    std::size_t next = 0;
    forEachRow(
        [&](const CatalogueRow& row) {
            forEachField(row.fields, [&](const ParamField& field) { fields[next++] = field; });
        },
        Texts...);
    return fields;
}();

/// The descriptors of all rows of `Texts`, a range's one for each number.
template <const auto&... Texts>
inline constexpr auto catalogueDescriptors = [] {
    constexpr std::size_t count = [] {
        std::size_t descriptors = 0;
        forEachRow([&](const CatalogueRow& row) { descriptors += row.idCount(); }, Texts...);
        return descriptors;
    }();
    std::array<ParamDescriptor, count> descriptors{};
    std::size_t next = 0;
    const ParamField* fields = catalogueFields<Texts...>.data();
    forEachRow(
        [&](const CatalogueRow& row) {
            std::uint32_t fieldCount = 0;
            forEachField(row.fields, [&](auto&) { ++fieldCount; });
            for (std::int32_t id = row.firstId; id <= row.lastId; ++id, ++next) {
                descriptors[next] = {static_cast<std::int32_t>(next),
                                     id,
                                     row.category,
                                     row.sourcePolicy,
                                     row.applyPriority,
                                     fieldCount,
                                     fields};
            }
            fields += fieldCount;
        },
        Texts...);
    return descriptors;
}();

}  // namespace korva::params
