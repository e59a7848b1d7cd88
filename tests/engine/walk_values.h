// Values that a registry may have, right ones and wrong ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/property_key.h"
#include "platform/registry.h"
#include "platform/unicode.h"
#include "tests/engine/walk_model.h"
#include "tests/support/engines.h"

namespace korva::test {

/// Makes values at random, the right ones more often than the wrong.
class WalkValues {
public:
    using Value = platform::RegistryValue;

    explicit WalkValues(std::mt19937_64& source) : random(source) {}

    [[nodiscard]] std::uint32_t below(std::size_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    }
    [[nodiscard]] bool once(std::size_t in) { return below(in) == 0; }

    [[nodiscard]] static Value number(std::uint32_t plain) {
        const auto bytes = std::as_bytes(std::span(&plain, 1));
        return {platform::registry_type::dword, {bytes.begin(), bytes.end()}};
    }
    [[nodiscard]] static Value text(std::string_view plain) {
        return {platform::registry_type::string, unitsOf(plain, true)};
    }
    /// Each with its terminator, and nothing behind.
    [[nodiscard]] static Value list(std::span<const std::string> texts) {
        Value value{platform::registry_type::multiString, {}};
        for (const std::string& one : texts) {
            const Bytes units = unitsOf(one, true);
            value.data.insert(value.data.end(), units.begin(), units.end());
        }
        return value;
    }

    /// A number, or what is none.
    [[nodiscard]] Value mostlyNumber(std::uint32_t limit) {
        switch (below(12)) {
            case 0:
                return text(std::to_string(1 + below(limit)));
            case 1:
                return {platform::registry_type::binary, someBytes(4)};
            case 2:
                return {platform::registry_type::qword, someBytes(8)};
            case 3:
                return {platform::registry_type::dword, someBytes(below(4))};
            default:
                return number(below(limit));
        }
    }

    /// The text of an engine, or what is none. The first one takes the longest to build.
    [[nodiscard]] Value mostlyEngine() {
        switch (below(16)) {
            case 0:
                return text("no engine");
            case 1:
                return number(1);
            case 2:
                return text(platform::guidText(GUID{}));
            default:
                return text(platform::guidText(engine()));
        }
    }
    [[nodiscard]] GUID engine() {
        static constexpr GUID engines[] = {firstEngine, secondEngine, secondEngine, thirdEngine,
                                           thirdEngine, thirdEngine,  thirdEngine,  unknownEngine};
        return engines[below(std::size(engines))];
    }

    [[nodiscard]] Bytes someBytes(std::size_t count) {
        Bytes bytes(count);
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(below(256));
        }
        return bytes;
    }

    /// A preset's chunk in one of its forms, most of them faulty.
    [[nodiscard]] Value blob(const std::vector<ModelParameter>& chunk) {
        Bytes entries;
        Bytes slices;
        const std::uint32_t form = below(10);
        for (std::uint32_t position = 0; position < chunk.size(); ++position) {
            std::uint32_t size = chunk[position].size;
            if ((form == 1 && once(4)) || form == 2) {
                size = form == 2 ? 0 : below(12);
                add(entries, position);
                add(entries, size);
            }
            const Bytes slice = once(2) ? someBytes(size) : Bytes(size, std::byte{1});
            slices.insert(slices.end(), slice.begin(), slice.end());
        }
        if (form == 3) {  // positions that there are not
            add(entries, static_cast<std::uint32_t>(chunk.size()) + below(9));
            add(entries, below(40));
        }
        return {platform::registry_type::binary, joined(form, entries, slices)};
    }

private:
    [[nodiscard]] static Bytes unitsOf(std::string_view plain, bool isTerminated) {
        platform::WideString wide = platform::toWide(plain);
        if (isTerminated) {
            wide.push_back(0);
        }
        const auto bytes = std::as_bytes(std::span(wide.data(), wide.size()));
        return {bytes.begin(), bytes.end()};
    }

    static void add(Bytes& bytes, std::uint32_t word) {
        bytes.push_back(static_cast<std::byte>(word & 0xFF));
        bytes.push_back(static_cast<std::byte>(word >> 8 & 0xFF));
    }

    [[nodiscard]] Bytes joined(std::uint32_t form, const Bytes& entries, const Bytes& slices) {
        Bytes bytes = someBytes(2);
        add(bytes, static_cast<std::uint32_t>(entries.size() / 4) + (form == 4 ? below(2000) : 0));
        bytes.insert(bytes.end(), entries.begin(), entries.end());
        bytes.insert(bytes.end(), slices.begin(), slices.end());
        if (form == 5) {
            bytes.resize(below(bytes.size() + 1));
        } else if (form == 6) {
            bytes.resize(below(5));
        } else if (form == 7) {
            bytes.push_back(std::byte{7});
        }
        return bytes;
    }

    std::mt19937_64& random;
};

}  // namespace korva::test
