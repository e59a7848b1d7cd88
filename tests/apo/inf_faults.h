// What an installation by an INF file would stumble over, or never look at.
#pragma once

#include <string>
#include <vector>

#include "tests/apo/inf_file.h"

namespace korva::test {

/// A line each, in no order that matters: references that lead nowhere, sections and strings that nobody
/// names, files without a disk, values that are none, and values that are given twice.
[[nodiscard]] std::vector<std::string> faultsOf(const InfFile& inf);

}  // namespace korva::test
