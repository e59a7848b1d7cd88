// Immutable bytes that many share.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>

#include "framework/ref.h"

namespace korva::framework {

/// A vector of bytes that never changes: a copy is a share of the same bytes, and equality is that of the
/// contents. The value type of parameters. Empty, it has nothing on the heap.  [any]
class SharedBytes {
public:
    SharedBytes() noexcept = default;
    /// Copies the bytes, in one allocation.
    explicit SharedBytes(std::span<const std::byte> bytes);

    [[nodiscard]] std::span<const std::byte> bytes() const noexcept {
        return block ? std::span(block->data(), block->size) : std::span<const std::byte>();
    }
    [[nodiscard]] std::size_t size() const noexcept { return bytes().size(); }
    [[nodiscard]] bool empty() const noexcept { return !block; }

    friend bool operator==(const SharedBytes& a, const SharedBytes& b) noexcept {
        return a.block == b.block || (a.size() == b.size() && haveEqualBytes(*a.block, *b.block));
    }

private:
    /// The count of shares and the length; the bytes follow it.
    struct Block {
        mutable std::atomic<std::size_t> shareCount{1};
        std::size_t size = 0;

        void AddRef() const noexcept { shareCount.fetch_add(1, std::memory_order_relaxed); }
        // The holder of the only share needs no other's consent: a look is cheaper than a change.
        void Release() const noexcept {
            if (shareCount.load(std::memory_order_acquire) == 1 ||
                shareCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
                free();
            }
        }
        [[nodiscard]] const std::byte* data() const noexcept {
            return reinterpret_cast<const std::byte*>(this + 1);
        }

    private:
        void free() const noexcept;
    };

    /// Of blocks of one length.
    static bool haveEqualBytes(const Block& a, const Block& b) noexcept;

    Ref<const Block> block;
};

}  // namespace korva::framework
