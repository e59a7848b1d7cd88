// Numbers and texts out of any property store.
//
// The result is 0, or why there is no value; anything but 0 is a failure, and no HRESULT test finds those
// that are positive:
//
//   0x80004003         without a store
//   a negative number  what the store gave
//   1630               the value is of another kind; it is the thread's last error then, too
//   any number         the store has no such value and says so by VT_EMPTY: the thread's last error, which
//                      may be 0. `out` has its default then.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/published/property_interfaces.h"

namespace korva::params {

using ReadResult = std::int32_t;

/// Reads VT_I1, VT_I2, VT_I4 (with their signs extended), VT_UI1, VT_UI2 or VT_UI4. `out` is 0 without a
/// value.  [any]
ReadResult ReadU32(IPropertyStore* store, REFPROPERTYKEY key, std::uint32_t& out);

/// Reads VT_LPWSTR, and gives it as UTF-8. `out` is empty without a value.  [any]
ReadResult ReadText(IPropertyStore* store, REFPROPERTYKEY key, std::string& out);

/// Reads a list of VT_LPWSTR, and gives each as UTF-8. `out` is empty without a value.  [any]
ReadResult ReadTexts(IPropertyStore* store, REFPROPERTYKEY key, std::vector<std::string>& out);

}  // namespace korva::params
