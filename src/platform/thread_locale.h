// The locale of a thread.
#pragma once

#include <cstdint>

namespace korva::platform {

/// While it lives, the creating thread has the system's default locale; the former one comes back with its
/// end, on the same thread. Linux has no locale of a thread: it does nothing there.  [any]
class SystemLocale {
public:
    SystemLocale() noexcept;
    ~SystemLocale();
    SystemLocale(const SystemLocale&) = delete;
    SystemLocale& operator=(const SystemLocale&) = delete;

private:
    [[maybe_unused]] std::uint32_t former = 0;
};

}  // namespace korva::platform
