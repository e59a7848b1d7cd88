// Another process that does what it is told.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "bench/support/shared_page.h"
#include "bench/support/temporary_folder.h"
#include "platform/registry.h"

namespace korva::bench {

/// A value of the registry that is another one each time it is set: four bytes of it count up, the others are
/// zero.
struct CountingValue {
    std::string keyPath;  ///< Below HKEY_LOCAL_MACHINE.
    std::string name = "level";
    std::uint32_t type = platform::registry_type::dword;
    std::size_t bytes = 4;
    std::size_t countAt = 0;  ///< Where the four bytes are.
};

/// Ends its process with itself. Members raise std::runtime_error.
class Partner {
public:
    /// `value` is the one that the process sets.
    explicit Partner(const CountingValue& value);
    ~Partner();
    Partner(const Partner&) = delete;
    Partner& operator=(const Partner&) = delete;

    [[nodiscard]] pid_t process() const noexcept { return child; }
    [[nodiscard]] const SharedFile& page() const noexcept { return shared; }

    /// Tells the process to do something, and waits until the one who is told of that has answered. Gives the
    /// nanoseconds from where the process began to wake, or to commit, to where the other one heard of it.
    [[nodiscard]] std::int64_t timeOf(Order order) const;

private:
    void tell(Order order) const;

    TemporaryFolder folder;
    SharedFile shared;
    pid_t child = 0;
};

/// To be called by the one who is told, as soon as it hears of it.
void answer(const SharedFile& page) noexcept;

}  // namespace korva::bench
