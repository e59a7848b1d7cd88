// Property values in the registry: what each kind is stored as, and what comes back.
//
// Reading knows less than writing: a 64-bit number can be stored and not be read, and a signed number comes
// back as an unsigned one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/published/property_types.h"
#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::platform {

/// A list of strings, as a variant's kind.
inline constexpr auto textList = static_cast<VARTYPE>(VT_VECTOR | VT_LPWSTR);

/// The registry's type for a kind of value: REG_DWORD for VT_I4 and VT_UI4, REG_QWORD for VT_I8 and VT_UI8,
/// REG_SZ for VT_LPWSTR, REG_BINARY for VT_BLOB, REG_MULTI_SZ for a list of strings. None for all others.
/// [any]
[[nodiscard]] std::optional<std::uint32_t> registryTypeOf(VARTYPE kind) noexcept;

/// The bytes that a value is stored as: a number's, little-endian; the UTF-16 text with its terminator; the
/// blob's; the strings of a list, each with its terminator, one after another. They are the value's own, or
/// lie in `joined`. 0x80004001 for a kind that has no type, 0x80070057 for a blob or a list with a length but
/// no contents. A null string counts as an empty one. `bytes` is as it was unless the result is 0.  [any]
[[nodiscard]] HRESULT storedBytes(REFPROPVARIANT value, WideString& joined,
                                  std::span<const std::byte>& bytes);

/// Where the memory of variants comes from; null for want of it.
using TaskMemory = void* (*)(std::size_t size);

/// Makes a variant, which owns its memory, of a value as it is stored:
///
///   REG_SZ        VT_LPWSTR, always terminated; a single byte past the last whole unit doesn't count
///   REG_BINARY    VT_BLOB; without a pointer if it has no length
///   REG_DWORD     VT_UI4; of more than 4 bytes 0x800700EA, of fewer 0x8007000D
///   REG_MULTI_SZ  a list of strings, counted by `stringCount`; of an odd number of bytes 0x8007000D
///   other types   0x80004001
///
/// 0x8007000E without memory. `value` is empty before, and stays so unless the result is 0.  [any]
[[nodiscard]] HRESULT variantOf(const RegistryValue& stored, PROPVARIANT& value, TaskMemory allocate);
[[nodiscard]] HRESULT variantOf(const RegistryValue& stored, PROPVARIANT& value);

/// What published methods give for a result of the registry: 0 and negative numbers as they are, a positive
/// one as 0x8007 with its low half.  [any]
[[nodiscard]] constexpr HRESULT hresultOf(RegistryResult result) noexcept {
    return result <= 0 ? result
                       : static_cast<HRESULT>((static_cast<std::uint32_t>(result) & 0xFFFFU) | 0x80070000U);
}

}  // namespace korva::platform
