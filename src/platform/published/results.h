// The results of published methods that this system gives; beside each its published name.
#pragma once

#include <cstdint>

#include "platform/published/base_types.h"

namespace korva::published {

inline constexpr auto ok = static_cast<HRESULT>(0);                             ///< S_OK
inline constexpr auto okButNo = static_cast<HRESULT>(1);                        ///< S_FALSE
inline constexpr auto notImplemented = static_cast<HRESULT>(0x80004001U);       ///< E_NOTIMPL
inline constexpr auto noInterface = static_cast<HRESULT>(0x80004002U);          ///< E_NOINTERFACE
inline constexpr auto nullPointer = static_cast<HRESULT>(0x80004003U);          ///< E_POINTER
inline constexpr auto unspecifiedFailure = static_cast<HRESULT>(0x80004005U);   ///< E_FAIL
inline constexpr auto storageAccessDenied = static_cast<HRESULT>(0x80030005U);  ///< STG_E_ACCESSDENIED
inline constexpr auto invalidHandle = static_cast<HRESULT>(0x80070006U);        ///< E_HANDLE
inline constexpr auto outOfMemory = static_cast<HRESULT>(0x8007000EU);          ///< E_OUTOFMEMORY
inline constexpr auto invalidArgument = static_cast<HRESULT>(0x80070057U);      ///< E_INVALIDARG
inline constexpr auto notFound = static_cast<HRESULT>(0x80070490U);             ///< E_NOTFOUND
inline constexpr auto deviceInvalidated =
    static_cast<HRESULT>(0x88890004U);  ///< AUDCLNT_E_DEVICE_INVALIDATED

// What a server of classes tells.
inline constexpr auto noAggregation = static_cast<HRESULT>(0x80040110U);      ///< CLASS_E_NOAGGREGATION
inline constexpr auto classNotAvailable = static_cast<HRESULT>(0x80040111U);  ///< CLASS_E_CLASSNOTAVAILABLE

// What an audio object tells.
inline constexpr auto alreadyInitialized = static_cast<HRESULT>(0x887D0001U);  ///< APOERR_ALREADY_INITIALIZED
inline constexpr auto notInitialized = static_cast<HRESULT>(0x887D0002U);      ///< APOERR_NOT_INITIALIZED
inline constexpr auto formatNotSupported =
    static_cast<HRESULT>(0x887D0003U);                                      ///< APOERR_FORMAT_NOT_SUPPORTED
inline constexpr auto buffersOverlap = static_cast<HRESULT>(0x887D0005U);   ///< APOERR_BUFFERS_OVERLAP
inline constexpr auto alreadyUnlocked = static_cast<HRESULT>(0x887D0006U);  ///< APOERR_ALREADY_UNLOCKED
inline constexpr auto connectionCountInvalid =
    static_cast<HRESULT>(0x887D0007U);  ///< APOERR_NUM_CONNECTIONS_INVALID
inline constexpr auto outputMaxFrameCountInvalid =
    static_cast<HRESULT>(0x887D0008U);  ///< APOERR_INVALID_OUTPUT_MAXFRAMECOUNT
inline constexpr auto connectionFormatInvalid =
    static_cast<HRESULT>(0x887D0009U);                                   ///< APOERR_INVALID_CONNECTION_FORMAT
inline constexpr auto objectLocked = static_cast<HRESULT>(0x887D000AU);  ///< APOERR_APO_LOCKED

[[nodiscard]] constexpr bool succeeded(HRESULT result) noexcept {
    return result >= 0;
}
[[nodiscard]] constexpr bool failed(HRESULT result) noexcept {
    return result < 0;
}

}  // namespace korva::published
