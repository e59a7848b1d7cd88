#include "params/store_channel.h"

#include <algorithm>
#include <bit>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace korva::params {
namespace {

StoreChannel::StopHandles joined(StoreChannel::StopHandles first, const StoreChannel::StopHandles& second) {
    first.insert(first.end(), second.begin(), second.end());
    if (first.size() > platform::maxStopHandles) {
        throw std::invalid_argument("a channel with too many stop handles");
    }
    return first;
}

}  // namespace

StoreChannel::StoreChannel(std::unique_ptr<platform::StreamWriter> written, const StopHandles& stops,
                           const StopHandles& moreStops)
    : stream(std::move(written)), stopHandles(joined(stops, moreStops)) {}

// The buffer stays: messages are many and short.
bool StoreChannel::makeRoom(std::size_t length) noexcept {
    try {
        if (length > buffer.size()) {
            buffer.resize(std::bit_ceil(length));
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::span<const std::byte> StoreChannel::framed(std::span<const std::byte> data) noexcept {
    buffer[0] = std::byte{0};
    std::copy(data.begin(), data.end(), buffer.begin() + 1);
    return std::span(buffer).first(data.size() + 1);
}

bool StoreChannel::WriteSome(std::span<const std::byte> data, std::size_t& written) {
    if (stream == nullptr || !stream->isOpen()) {
        return false;
    }
    const std::lock_guard guard(mutex);
    if (!makeRoom(data.size() + 1)) {
        return false;
    }
    const platform::StreamWrite write = stream->write(framed(data), stopHandles);
    if (!write.isDone) {
        remember(write.error);
        return false;
    }
    // The frame byte alone is no progress, and repeating that would have no end.
    if (write.byteCount <= 1) {
        return false;
    }
    written = write.byteCount - 1;
    return true;
}

// A write that was stopped as it ended has no number.
void StoreChannel::remember(std::uint32_t failure) noexcept {
    if (failure != 0) {
        error = failure;
    }
}

bool StoreChannel::WriteAll(std::span<const std::byte> data) {
    while (!data.empty()) {
        std::size_t written = 0;
        if (!WriteSome(data, written)) {
            return false;
        }
        data = data.subspan(std::min(written, data.size()));
    }
    return true;
}

}  // namespace korva::params
