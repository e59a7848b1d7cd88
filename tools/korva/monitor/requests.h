// Asking an audio object for what it tells only on request.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// One question: the value that asks, and those that answer.
struct Request {
    std::string_view value;
    std::span<const std::string_view> answers;

    /// Without the "Capture" that each has in front.
    [[nodiscard]] std::string_view shortName() const { return value.substr(7); }
};

/// In the order in which objects look at them.
[[nodiscard]] std::span<const Request> allRequests();
/// By its name, with or without "Capture" and in any case; null if there is none.
[[nodiscard]] const Request* requestOf(std::string_view name);

/// The request for levels, which also turns metering on, unless it is 0.
inline constexpr std::string_view levelRequest = "CaptureLevelMeters";

/// The next number of a request: objects answer one that differs from the last that they saw, and for levels
/// 0 means off.
[[nodiscard]] constexpr std::uint32_t requestAfter(std::uint32_t last) {
    return last == 0xFFFFFFFF ? 1 : last + 1;
}

/// Writes a request's next number, which counts on from the one in the key, so that who asks at the same time
/// asks the same. `written` is that number if the result is 0.  [any, blocks]
[[nodiscard]] platform::RegistryResult ask(const platform::RegistryKey& key, std::string_view request,
                                           std::uint32_t& written);

/// Has an object measure levels as long as it lives, and for each question write them.
///
/// At its end metering is turned off, unless somebody else has asked since: they will do it then.
class LevelQuestions {
public:
    /// `writable` is the instance's key.
    explicit LevelQuestions(platform::RegistryKey writable) : key(std::move(writable)) {}
    ~LevelQuestions();
    LevelQuestions(const LevelQuestions&) = delete;
    LevelQuestions& operator=(const LevelQuestions&) = delete;

    [[nodiscard]] platform::RegistryResult ask();

private:
    platform::RegistryKey key;
    std::uint32_t last = 0;  ///< What it wrote; 0 if it never did.
};

}  // namespace korva::tool
