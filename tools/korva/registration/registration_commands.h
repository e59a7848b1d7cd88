// korva register, korva unregister: has an object's library write its classes into the registry.
#pragma once

#include <string>

namespace korva::tool {

enum class Registration { add, remove };

/// As the command line has them.
struct RegistrationOptions {
    std::string library;  ///< Without it the one beside the tool.
    bool hasLibrary = false;
    bool json = false;
};

/// Throws `ToolError` or `HostError`; what the library has done by then it undoes itself.
void runRegistration(Registration registration, const RegistrationOptions& options);

}  // namespace korva::tool
