// Memory that a module gets, and beside which it may touch nothing.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace korva::tool {

/// Bytes between two pages that can't be touched, right behind the first or right before the second.
/// What is left of their own pages is filled, and shows a write. Zero at first.  [owner]
class GuardedMemory {
public:
    enum class Place {
        atPageBegin,
        atPageEnd,
        loose  ///< With a page of ours on either side: small slips go unnoticed.
    };

    /// `name` stands in what a check says: "the text".
    GuardedMemory(std::size_t bytes, Place place, std::string name);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    [[nodiscard]] std::byte* data() const noexcept { return begin; }
    [[nodiscard]] std::span<std::byte> bytes() const noexcept { return {begin, count}; }

    /// From now on the memory can't be touched either: `why` completes "touches the text ...".
    void forbid(const std::string& why);
    /// Until now. What is in it is as before.
    void allow();

    /// Whether nothing was written to the rest of the pages.
    [[nodiscard]] bool restIsWhole() const;
    /// Throws `CheckFailed` if something was.
    void expectRestWhole() const;

private:
    std::string title;
    std::size_t count;
    std::size_t inner;  ///< Bytes of the pages between the guards.
    std::byte* pages;   ///< The first guard.
    std::byte* begin;
    bool isForbidden = false;
};

}  // namespace korva::tool
