// What users are told of the registry at hand.
#pragma once

namespace korva::platform {

struct RegistryWords {
    const char* whereItIs;     ///< Help: whole lines.
    const char* howItChanges;  ///< Help: what becomes of many changes, behind "Make the changes ...".
    const char* noRight;       ///< An error and its remedy; `{}` stands for the registry's place.
};

[[nodiscard]] const RegistryWords& registryWords() noexcept;

}  // namespace korva::platform
