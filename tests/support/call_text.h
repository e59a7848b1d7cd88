// The calls of a recording as lines of text, to be compared whole.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tests/support/recorded_calls.h"

namespace korva::test {

/// One call, its instance as a number with `#`, its bytes as hexadecimal digits:
///
///     Load TANMER64                            Create #1             isHardwareAvailable #1 0
///     Initialize #1 6ch 48000 60f, 2ch 48000 3, 0ch 0 0              Clear #1 -1
///     SetParameter #1 -1:-18 00                SetGetData #1 -1:-38 in 01      SetGetData #1 -1:-32 out 4
///
/// An index of a parameter that isn't -1 stands behind its number.
[[nodiscard]] std::string textOf(const RecordedCall& call);
[[nodiscard]] std::vector<std::string> textsOf(const std::vector<RecordedCall>& calls);

/// The line of a parameter.
[[nodiscard]] std::string parameterText(int instance, int bank, int id, std::span<const std::byte> bytes);

}  // namespace korva::test
