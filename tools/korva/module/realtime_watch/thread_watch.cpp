#include <cstddef>
#include <cstdlib>

#include "korva/module/realtime_watch/violations.h"

namespace korva::tool {
namespace {

thread_local ViolationHandler handlerOfThread = nullptr;

thread_local bool isProbed = false;
thread_local bool probeWasSeen = false;

}  // namespace

bool watchThisThread(ViolationHandler handler) noexcept {
    if (!trapSystemCallsOfThisThread()) {
        return false;
    }
    handlerOfThread = handler;
    return true;
}

bool functionsAreWatched() noexcept {
    // By a pointer: compilers know what malloc itself may look at.
    void* (*volatile const allocate)(std::size_t) = std::malloc;
    isProbed = true;
    void* const memory = allocate(1);
    isProbed = false;
    std::free(memory);
    return probeWasSeen;
}

// Every allocation of the program comes by here: it has to be short.
void forbidOnWatchedThread(const char* function) noexcept {
    if (handlerOfThread != nullptr) {
        handlerOfThread({.function = function, .systemCall = 0});
    }
    if (isProbed) {
        probeWasSeen = true;
    }
}

void forbidSystemCallOnWatchedThread(int number) noexcept {
    if (handlerOfThread != nullptr) {
        handlerOfThread({.function = nullptr, .systemCall = number});
    }
}

}  // namespace korva::tool
