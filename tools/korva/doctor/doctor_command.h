// korva doctor: looks for what makes sound go wrong.
#pragma once

#include <string>

namespace korva::tool {

/// As the command line has them.
struct DoctorOptions {
    std::string library;  ///< Without it the one beside the tool.
    bool hasLibrary = false;
    bool json = false;
};

/// Prints what it finds, and gives the exit code: 1 if there is a fault. Throws `ToolError` where it can't
/// look. Changes nothing.
[[nodiscard]] int runDoctor(const DoctorOptions& options);

}  // namespace korva::tool
