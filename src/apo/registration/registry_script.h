// Scripts of what a server has in the registry, in the language of registrar scripts.
//
//   HKCR                                          a root: HKCR, HKLM, HKCU, or the same in full
//   {
//       NoRemove CLSID                            a key; this one stays when the script is undone
//       {
//           ForceRemove '{...}' = s 'Text'        made anew, and goes with all below it; its default value
//           {
//               val Name = d '13'                 a value: `s` a string, `d` a number, decimal or &H and hex
//           }
//       }
//   }
//
// A name or a text is a word, or anything between quotes, in which two quotes stand for one. %NAME% in it is
// replaced, and %% stands for one percent sign. Line breaks count as blanks. Words of the language count
// without regard to case.
#pragma once

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/published/base_types.h"
#include "platform/registry.h"

namespace korva::apo {

/// What the undoing of a script leaves of a key.
enum class KeyRemoval {
    ifEmpty,  ///< Its values of the script go; it goes too if nothing else is left in it.
    never,    ///< All of it but what the script has below it.
    whole     ///< Nothing, whatever it has.
};

struct ScriptValue {
    std::string name;  ///< Empty for the default value.
    platform::RegistryValue value;
};

struct ScriptKey {
    std::string name;
    KeyRemoval removal = KeyRemoval::ifEmpty;
    std::vector<ScriptValue> values{};
    std::vector<ScriptKey> keys{};
};

struct ScriptRoot {
    platform::RegistryRoot root;
    std::vector<ScriptKey> keys;
};

using RegistryScript = std::vector<ScriptRoot>;

/// The texts by their names, which count without regard to case.
using Replacements = std::map<std::string, std::string, std::less<>>;

/// A script that can't be understood: what was expected, and in which line, counted from 1.
class RegistryScriptError : public std::runtime_error {
public:
    RegistryScriptError(std::size_t lineNumber, const std::string& expected)
        : std::runtime_error(expected), line(lineNumber) {}

    std::size_t line;
};

/// Reads a script. Raises `RegistryScriptError` for one that breaks the rules above, has a name that no key
/// or value can have, keys more than 64 deep, or a replacement that isn't there.  [any]
[[nodiscard]] RegistryScript readRegistryScript(std::string_view text, const Replacements& replacements);

/// Writes what the script says, in its order. The first result that isn't 0 ends it; what was written until
/// then stays, and `undoRegistryScript` takes it back.  [any, blocks]
[[nodiscard]] HRESULT applyRegistryScript(const RegistryScript& script);

/// Takes back what the script says, see `KeyRemoval`. What isn't there counts as taken back. Goes on after
/// a failure, and gives the first one.  [any, blocks]
[[nodiscard]] HRESULT undoRegistryScript(const RegistryScript& script);

}  // namespace korva::apo
