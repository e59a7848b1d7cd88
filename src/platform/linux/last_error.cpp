#include "platform/last_error.h"

namespace korva::platform {
namespace {

/// A plain word: a thread that ends has nothing of this library to run.
thread_local std::uint32_t threadsError = 0;

}  // namespace

std::uint32_t lastError() noexcept {
    return threadsError;
}

void setLastError(std::uint32_t error) noexcept {
    threadsError = error;
}

}  // namespace korva::platform
