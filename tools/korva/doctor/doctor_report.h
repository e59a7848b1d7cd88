// What `korva doctor` prints.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "korva/doctor/finding.h"

namespace korva::tool {

struct DoctorReport {
    Findings findings;  ///< In the order of their subjects.
    std::array<bool, subjectNames.size()>
        isSkipped{};  ///< What couldn't be looked at for what was found before.

    [[nodiscard]] std::size_t faults() const;
};

/// A line for each subject that nothing was found for, several for each finding, and the number of faults.
[[nodiscard]] std::string doctorText(const DoctorReport& report);
/// The same as one JSON value.
[[nodiscard]] std::string doctorJson(const DoctorReport& report);

}  // namespace korva::tool
