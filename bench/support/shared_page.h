// What a benchmark and its partner process have in common.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "bench/support/futex_word.h"

namespace korva::bench {

/// What the partner does when it is told to.
enum class Order : std::uint32_t {
    raiseWord,  ///< `target` of the page.
    setValue,   ///< One of the registry: a number that is another one each time.
    end
};

/// Lines of the cache of their own for those who write.
struct SharedPage {
    alignas(64) FutexWord orders;       ///< The partner sleeps on it.
    std::atomic<Order> order{};         ///< The last one.
    alignas(64) FutexWord target;       ///< What the one who is told sleeps on.
    std::atomic<std::int64_t> begunNs;  ///< When the partner began to wake, or to commit.
    std::atomic<bool> hasFailed;        ///< The partner could not do it.
    alignas(64) FutexWord answers;      ///< The benchmark sleeps on it.
    std::atomic<std::int64_t> heardNs;  ///< When the one who is told heard of it.
};

/// A page in a file, for all processes that open it.
class SharedFile {
public:
    /// Makes the file if it is missing; the page is zero then. Raises std::runtime_error if it can't be had.
    explicit SharedFile(const std::string& path);
    ~SharedFile();
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    SharedPage* operator->() const noexcept { return page; }

private:
    SharedPage* page;
};

/// The time on the clock that all processes share.
[[nodiscard]] std::int64_t nowNs() noexcept;

}  // namespace korva::bench
