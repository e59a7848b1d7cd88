// Every loop in its simplest form, as an oracle for the versions that run.
#pragma once

#include <cstdint>

#include "rt/kernels/kernels.h"

namespace korva::test {

/// Loops that follow their definition sample by sample, but for `foldToStereo`, which is null: it stands for
/// three of the others together.
extern const rt::Kernels referenceKernels;

}  // namespace korva::test
