// Why a host gets no further with an audio object.
#pragma once

#include <stdexcept>
#include <string>

#include "platform/published/base_types.h"

namespace korva::tool {

/// What the user is told, in one sentence without a full stop.
class HostError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// "0x887d0003, format not supported"; the number alone for a result without a name.  [any]
[[nodiscard]] std::string resultText(HRESULT result);

/// Throws `HostError`, "`what`: 0x80070005, access denied", unless `result` is a success.
void throwIfFailed(HRESULT result, const std::string& what);

}  // namespace korva::tool
