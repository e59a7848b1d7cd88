// What commands print.
#pragma once

#include <string_view>

#include "platform/standard_streams.h"

namespace korva::tool {

using platform::isTerminal;

/// Writes all of `text`. Throws when it can't be written whole.
void printOutput(std::string_view text);

/// Throws if standard output is a pipe whose reader is gone, for those who may have nothing to write for
/// long.
void expectReaderOfOutput();

}  // namespace korva::tool
