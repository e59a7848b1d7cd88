// Words that the owner and the audio thread share without ordering.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>

#include "rt/engine_format.h"

namespace korva::rt {

/// One word that stands for itself: nothing else is ordered by it, so all its accesses are relaxed. Who may
/// set it is said where it is declared.  [any, rt]
template <typename T>
class SharedWord {
    static_assert(std::atomic<T>::is_always_lock_free);

public:
    constexpr SharedWord(T initial = T{}) noexcept : word(initial) {}  // NOLINT: a word is a value

    [[nodiscard]] T get() const noexcept { return word.load(std::memory_order_relaxed); }
    /// A plain store: nobody needs the word that it replaces, and an exchange would cost the audio thread.
    void set(T value) noexcept { word.store(value, std::memory_order_relaxed); }

private:
    std::atomic<T> word;
};

/// A format that is copied word by word: a reader that comes during a change may get some words of each.
/// [any, rt]
class SharedFormat {
    using Words = std::array<std::uint32_t, sizeof(EngineFormat) / sizeof(std::uint32_t)>;

public:
    [[nodiscard]] EngineFormat get() const noexcept {
        EngineFormat format;
        copyTo(format);
        return format;
    }
    /// Stores each word where it belongs. A copy in between would cost the audio thread the wait of a wide
    /// load for narrow stores.
    void copyTo(EngineFormat& format) const noexcept {
        auto* const bytes = reinterpret_cast<unsigned char*>(&format);
        for (std::size_t i = 0; i < words.size(); ++i) {
            const std::uint32_t word = words[i].get();
            std::memcpy(bytes + i * sizeof(word), &word, sizeof(word));
        }
    }
    /// Keeps only the bits of a plane's number of each byte of the map, so that no map, torn or not, leads
    /// the audio thread outside the bus.
    void set(EngineFormat format) noexcept {
        for (std::uint8_t& plane : format.planeOfChannel) {
            plane &= planeCount - 1;
        }
        const auto copy = std::bit_cast<Words>(format);
        for (std::size_t i = 0; i < copy.size(); ++i) {
            words[i].set(copy[i]);
        }
    }

private:
    std::array<SharedWord<std::uint32_t>, std::tuple_size_v<Words>> words{};
};

}  // namespace korva::rt
