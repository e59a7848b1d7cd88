// Marks of the code that the audio thread runs.
#pragma once

#include <cstddef>

/// Puts a function into the code section that is kept in memory. Only for out-of-line functions that are
/// no templates: the compiler ignores the section for those. Without noinline a caller elsewhere would get
/// a copy outside the section.
#define KORVA_RT_CODE [[gnu::section("rt_code"), gnu::noinline]]

/// Marks a function that may neither lock, allocate, wait nor call the system, for the compilers that check
/// it. Stands where attributes of the function's type stand: after `noexcept`.
#if defined(__has_cpp_attribute) && __has_cpp_attribute(clang::nonblocking)
#define KORVA_NONBLOCKING [[clang::nonblocking]]
#else
#define KORVA_NONBLOCKING
#endif

namespace korva::rt {

/// The bytes of the real-time code section of the program or library that this is linked into.
struct CodeRange {
    const void* start;
    std::size_t size;
};

[[nodiscard]] CodeRange realtimeCode() noexcept;

}  // namespace korva::rt
