#include "rt/realtime.h"

// The linkers supply both ends of a section whose name is an identifier. Hidden, so that each library sees
// its own.
extern "C" {
[[gnu::visibility("hidden")]] extern const unsigned char __start_rt_code[];
[[gnu::visibility("hidden")]] extern const unsigned char __stop_rt_code[];
}

namespace korva::rt {

CodeRange realtimeCode() noexcept {
    return {__start_rt_code, static_cast<std::size_t>(__stop_rt_code - __start_rt_code)};
}

}  // namespace korva::rt
