#include "framework/shared_bytes.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace korva::framework {

SharedBytes::SharedBytes(std::span<const std::byte> bytes) {
    if (bytes.empty()) {
        return;
    }
    auto* const made = new (::operator new(sizeof(Block) + bytes.size())) Block;
    made->size = bytes.size();
    std::memcpy(const_cast<std::byte*>(made->data()), bytes.data(), bytes.size());
    block = Ref<const Block>::adopt(made);
}

void SharedBytes::Block::Release() const noexcept {
    if (shareCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        this->~Block();
        ::operator delete(const_cast<Block*>(this));
    }
}

bool operator==(const SharedBytes& a, const SharedBytes& b) noexcept {
    return a.block == b.block || std::ranges::equal(a.bytes(), b.bytes());
}

}  // namespace korva::framework
