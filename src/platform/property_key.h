// Property keys and GUIDs, as text and back.
#pragma once

#include <string>
#include <string_view>

#include "platform/published/property_types.h"

namespace korva::platform {

/// The 38 characters of a GUID in lower case: {6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}.  [any]
[[nodiscard]] std::string guidText(const GUID& guid);

/// The same in capitals, as classes and what belongs to them are registered.  [any]
[[nodiscard]] std::string upperGuidText(const GUID& guid);

/// The GUID that the hexadecimal digits of `text` make up, in the order of the text form; all other
/// characters are skipped, braces and hyphens like any letter past f. All zero unless there are exactly 32.
/// [any]
[[nodiscard]] GUID GuidFromText(std::string_view text) noexcept;

/// A key's text, which is its value's name in the registry: {6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},7.  [any]
[[nodiscard]] std::string KeyToText(REFPROPERTYKEY key);

/// The key of a value's name: a GUID, a comma, and decimal digits up to the first other character. A text
/// that is none gives a key that isn't valid. A pid past 32 bits keeps its lowest 32.  [any]
[[nodiscard]] PROPERTYKEY TextToKey(std::string_view text) noexcept;

/// Whether the key's GUID isn't all zero.  [any]
[[nodiscard]] bool isValidKey(REFPROPERTYKEY key) noexcept;

}  // namespace korva::platform
