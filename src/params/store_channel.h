// The byte stream by which a property store tells a peer of every change.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/shared_count.h"
#include "platform/mutex.h"
#include "platform/stream_write.h"

namespace korva::params {

/// The store's end of the stream. Every write goes out as one zero byte and then its data, so the peer finds
/// a zero before each field of a message. Whole writes of different threads follow one another; the fields
/// of their messages may mix.  [any, blocks]
class StoreChannel final : public framework::SharedCount<StoreChannel> {
public:
    using StopHandles = std::vector<platform::WaitHandle>;

    /// Each of the handles of both lists, while signalled, ends a write that the stream doesn't take at once.
    /// They stay their owners', and live as long as the channel. Raises `std::invalid_argument` for more than
    /// `platform::maxStopHandles`.
    StoreChannel(std::unique_ptr<platform::StreamWriter> stream, const StopHandles& stops,
                 const StopHandles& moreStops);

    /// One write: false if it failed or was stopped, if nothing of the data was taken, or without memory.
    /// Else `written` is the number of bytes of `data`, which isn't empty, that were.
    bool WriteSome(std::span<const std::byte> data, std::size_t& written);

    /// Writes until all of `data` is taken or a write fails; true at once without data.
    bool WriteAll(std::span<const std::byte> data);

    /// The system's number of the last write that it failed, 0 for none so far.
    [[nodiscard]] std::uint32_t lastError() const noexcept { return error.load(); }

private:
    [[nodiscard]] bool makeRoom(std::size_t length) noexcept;
    std::span<const std::byte> framed(std::span<const std::byte> data) noexcept;
    void remember(std::uint32_t failure) noexcept;

    const std::unique_ptr<platform::StreamWriter> stream;  // a write of its own at a time, under the mutex
    const StopHandles stopHandles;                         // one list after the other
    std::atomic<std::uint32_t> error{0};

    platform::Mutex mutex;  // for the rest
    std::vector<std::byte> buffer;
};

}  // namespace korva::params
