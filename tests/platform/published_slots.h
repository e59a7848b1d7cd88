// Published interfaces as C sees them: an identifier, and a table of methods.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/published/base_types.h"
#include "platform/reference_count.h"

// Published interfaces have no destructor in their tables.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace korva::test {

/// The identifier in its text form, group by group.
[[nodiscard]] inline std::string textOf(const GUID& guid) {
    std::array<std::uint8_t, 16> bytes{};
    std::memcpy(bytes.data(), &guid, sizeof(guid));
    // The first three groups lie in memory lowest byte first.
    constexpr std::array<std::size_t, 16> order = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string text;
    for (const std::size_t i : order) {
        text += "0123456789ABCDEF"[bytes[i] / 16];
        text += "0123456789ABCDEF"[bytes[i] % 16];
    }
    for (const std::size_t place : {20u, 16u, 12u, 8u}) {
        text.insert(place, "-");
    }
    return text;
}

/// A method as C sees it, with as many words as any of these takes.
using Slot = HRESULT(STDMETHODCALLTYPE*)(void* self, std::uintptr_t, std::uintptr_t, std::uintptr_t,
                                         std::uintptr_t);

/// Calls the method at a place of the object's table; gives what it returns.
inline HRESULT callSlot(void* object, std::size_t slot) {
    void** table = nullptr;
    std::memcpy(static_cast<void*>(&table), object, sizeof(table));
    // References are pointers to a caller in C; these point at zeros.
    static std::array<std::uint64_t, 8> zeros{};
    const auto word = reinterpret_cast<std::uintptr_t>(zeros.data());
    return reinterpret_cast<Slot>(table[slot])(object, word, word, word, word);
}

/// The three first methods, which answer by their place in the table.
template <class Interface>
class Numbered : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return 0; }
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override { return 1; }
    platform::ReferenceCount STDMETHODCALLTYPE Release() override { return 2; }
};

/// Whether the object's table holds that many methods, each in the place that it tells.
template <class Object>
void expectSlots(int count) {
    Object object;
    for (int slot = 0; slot < count; ++slot) {
        EXPECT_EQ(callSlot(&object, static_cast<std::size_t>(slot)), slot);
    }
}

}  // namespace korva::test

#pragma GCC diagnostic pop
