// Another process that does what it is told.
#pragma once

#include <sys/types.h>

#include <string>

#include "bench/params/shared_page.h"
#include "bench/support/temporary_folder.h"

namespace korva::bench {

/// Ends its process with itself. Members raise std::runtime_error.
class Partner {
public:
    /// `keyPath` is that of the key below HKEY_LOCAL_MACHINE whose values the process sets.
    explicit Partner(const std::string& keyPath);
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
