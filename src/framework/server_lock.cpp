#include "framework/server_lock.h"

#include <atomic>
#include <cstdint>

namespace korva::framework {
namespace {

constinit std::atomic<std::uint32_t> lockCount{0};

}  // namespace

bool ServerLock::isHeld() noexcept {
    return lockCount.load() != 0;
}

void ServerLock::add() noexcept {
    lockCount.fetch_add(1);
}

void ServerLock::remove() noexcept {
    lockCount.fetch_sub(1);
}

}  // namespace korva::framework
