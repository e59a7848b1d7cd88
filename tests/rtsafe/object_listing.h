// The functions of an object library and where each lies, as the object file tool lists them.
#pragma once

#include <string>
#include <vector>

namespace korva::test {

/// One function that an object file defines.
struct ObjectFunction {
    std::string object;  ///< File name of its object in the library.
    std::string section;
    std::string name;  ///< With its parameters, as in the source.
};

/// One place in a section that refers to a symbol elsewhere.
struct ObjectReference {
    std::string object;
    std::string symbol;  ///< Without an offset.
};

[[nodiscard]] std::vector<ObjectFunction> functionsOf(const std::string& library);
[[nodiscard]] std::vector<ObjectReference> referencesFrom(const std::string& library,
                                                          const std::string& section);

/// Symbols that the objects use and don't define.
[[nodiscard]] std::vector<ObjectReference> undefinedSymbolsOf(const std::string& library);

}  // namespace korva::test
