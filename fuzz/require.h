// What a fuzz target claims, in every kind of build.
#pragma once

#include <cstdlib>

namespace korva::fuzz {

/// Ends the process unless `isSo`: a fuzzer keeps the input that did it, and a stack names the line.  [any]
inline void require(bool isSo) {
    if (!isSo) {
        std::abort();
    }
}

}  // namespace korva::fuzz
