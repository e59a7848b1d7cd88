// What is called when a value changes. The functions are in a source of their own, so that no compiler sees
// at a place of call what they do.
#pragma once

#include <cstdint>

#include "framework/observable.h"

namespace korva::bench {

/// One who is told of values, by any of these ways.
struct Listener {
    std::uint64_t calls = 0;
    std::uint32_t last = 0;

    /// For libraries that call an object's method.
    void hear(std::uint32_t value) noexcept;
};

/// For a table of functions.
void hearFromTable(void* listener, std::uint32_t before, std::uint32_t value) noexcept;

/// An after function of an `Observable<std::uint32_t>`.
void hearFromObservable(void* listener, framework::ListenedTo& source, framework::ActiveObject& owner,
                        const void* published, void* pending, const void* defaultValue,
                        framework::Reason reason);

}  // namespace korva::bench
