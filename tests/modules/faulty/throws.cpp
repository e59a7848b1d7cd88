// Throws where nothing may be thrown.
#include <stdexcept>

#include "korva/dsp_module.h"

// NOLINTNEXTLINE(readability-identifier-naming): the interface's name
uint8_t ZRDSPAPI_Initialize(DspInstance*, EngineFormat*, EngineFormat*, EngineFormat*) {
    throw std::runtime_error("no memory for a delay");
}
