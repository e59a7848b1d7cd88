// What `korva doctor` finds: something that makes sound go wrong, or may be worth knowing.
#pragma once

#include <array>
#include <string>
#include <vector>

namespace korva::tool {

/// What is looked at, in this order.
enum class Subject {
    registry,
    library,
    registration,
    endpoints,
    modules,
    telemetry,
    instances,
    processor,
};

inline constexpr std::array<const char*, 8> subjectNames = {
    "registry", "library", "registration", "endpoints", "modules", "telemetry", "instances", "processor",
};

enum class Severity {
    remark,  ///< Nothing is wrong with it.
    fault
};

/// Texts are whole sentences, in UTF-8 as far as what was found is; a remedy may also be a command as one
/// types it. Of a remark it may be empty.
struct Finding {
    Subject subject = Subject::registry;
    Severity severity = Severity::fault;
    std::string what;
    std::string cause;
    std::string remedy;
};

using Findings = std::vector<Finding>;

}  // namespace korva::tool
