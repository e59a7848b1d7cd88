// What the recording module is told to answer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korva::recorder {

/// The value of `key` in KORVA_RECORDER_ANSWERS, a list such as `create=null,hardware=1`. A key with this
/// library's name and a dot before it, as in `DRIVOL64.hardware=0`, goes first.
[[nodiscard]] std::optional<std::string> answer(std::string_view key);

[[nodiscard]] std::uint32_t numberAnswer(std::string_view key, std::uint32_t otherwise);
[[nodiscard]] float factorAnswer(std::string_view key, float otherwise);

/// Waits as long as the file is there that the list has under `hold:` and the function's name.
void holdBack(std::string_view function);

/// Bytes, which the list has as hexadecimal digits.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> bytesAnswer(std::string_view key);

}  // namespace korva::recorder
