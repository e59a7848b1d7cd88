#include "framework/shared_bytes.h"

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

void SharedBytes::Block::free() const noexcept {
    this->~Block();
    ::operator delete(const_cast<Block*>(this));
}

bool SharedBytes::haveEqualBytes(const Block& a, const Block& b) noexcept {
    return std::memcmp(a.data(), b.data(), a.size) == 0;
}

}  // namespace korva::framework
