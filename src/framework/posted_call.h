// A call that another thread makes for the caller.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>

namespace korva::framework {

class Dispatcher;

/// A function that a dispatcher runs for a caller who waits. It lies on the caller's stack: from the moment
/// `done` is set it is gone.
struct PostedCall {
    using Function = void (*)(void* argument);

    Function function = nullptr;
    void* argument = nullptr;
    const Dispatcher* caller = nullptr;  ///< The dispatcher of the thread that waits; null if it has none.
    std::exception_ptr exception;        ///< What the function raised, for the caller.
    PostedCall* outer = nullptr;         ///< While it runs: the call that it interrupts.
    std::atomic<std::uint64_t> done{0};  ///< Set to 1 when the call has run; written last.
};

}  // namespace korva::framework
