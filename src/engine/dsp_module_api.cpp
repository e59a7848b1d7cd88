#include "engine/dsp_module_api.h"

namespace korva::engine {
namespace {

template <class Function>
void bind(const platform::ModuleLibrary& library, Function*& function, const char* name) noexcept {
    function = reinterpret_cast<Function*>(library.find(name));
}

}  // namespace

DspModuleApi bindDspModuleApi(const platform::ModuleLibrary& library) noexcept {
    DspModuleApi api;
    bind(library, api.Create, "ZRDSPAPI_Create");
    if (api.Create == nullptr) {
        return api;
    }
    bind(library, api.Free, "ZRDSPAPI_Free");
    bind(library, api.IsInputFormatSupported, "ZRDSPAPI_IsInputFormatSupported");
    bind(library, api.IsOutputFormatSupported, "ZRDSPAPI_IsOutputFormatSupported");
    bind(library, api.IsCaptureFormatSupported, "ZRDSPAPI_IsCaptureFormatSupported");
    bind(library, api.Initialize, "ZRDSPAPI_Initialize");
    bind(library, api.Uninitialize, "ZRDSPAPI_Uninitialize");
    bind(library, api.SetInputGain, "ZRDSPAPI_SetInputGain");
    bind(library, api.Clear, "ZRDSPAPI_Clear");
    bind(library, api.WakeUp, "ZRDSPAPI_WakeUp");
    bind(library, api.SetParameter, "ZRDSPAPI_SetParameter");
    bind(library, api.SetGetData, "ZRDSPAPI_SetGetData");
    bind(library, api.Process, "ZRDSPAPI_Process");
    bind(library, api.Capture, "ZRDSPAPI_Capture");
    return api;
}

}  // namespace korva::engine
