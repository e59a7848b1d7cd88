// The functions of a loaded DSP module.
#pragma once

#include <array>

#include "korva/dsp_module.h"
#include "platform/module_library.h"

namespace korva::engine {

/// A module's exports, in the order of `dspModuleExports`; null is one that it lacks. They hold as long as
/// the library is loaded.
struct DspModuleApi {
    decltype(&ZRDSPAPI_Create) Create = nullptr;
    decltype(&ZRDSPAPI_Free) Free = nullptr;
    decltype(&ZRDSPAPI_IsInputFormatSupported) IsInputFormatSupported = nullptr;
    decltype(&ZRDSPAPI_IsOutputFormatSupported) IsOutputFormatSupported = nullptr;
    decltype(&ZRDSPAPI_IsCaptureFormatSupported) IsCaptureFormatSupported = nullptr;
    decltype(&ZRDSPAPI_Initialize) Initialize = nullptr;
    decltype(&ZRDSPAPI_Uninitialize) Uninitialize = nullptr;
    decltype(&ZRDSPAPI_SetInputGain) SetInputGain = nullptr;
    decltype(&ZRDSPAPI_SetParameter) SetParameter = nullptr;
    decltype(&ZRDSPAPI_SetGetData) SetGetData = nullptr;
    decltype(&ZRDSPAPI_Clear) Clear = nullptr;
    decltype(&ZRDSPAPI_WakeUp) WakeUp = nullptr;
    decltype(&ZRDSPAPI_Process) Process = nullptr;
    decltype(&ZRDSPAPI_Capture) Capture = nullptr;
};

inline constexpr std::array<const char*, 14> dspModuleExports = {
    "ZRDSPAPI_Create",
    "ZRDSPAPI_Free",
    "ZRDSPAPI_IsInputFormatSupported",
    "ZRDSPAPI_IsOutputFormatSupported",
    "ZRDSPAPI_IsCaptureFormatSupported",
    "ZRDSPAPI_Initialize",
    "ZRDSPAPI_Uninitialize",
    "ZRDSPAPI_SetInputGain",
    "ZRDSPAPI_SetParameter",
    "ZRDSPAPI_SetGetData",
    "ZRDSPAPI_Clear",
    "ZRDSPAPI_WakeUp",
    "ZRDSPAPI_Process",
    "ZRDSPAPI_Capture",
};

/// Looks the exports up; none where there is no library, or where it can't create.  [any]
[[nodiscard]] DspModuleApi bindDspModuleApi(const platform::ModuleLibrary& library) noexcept;

}  // namespace korva::engine
