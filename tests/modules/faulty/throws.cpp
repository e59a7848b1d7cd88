// Throws where nothing may be thrown, and what only it knows.
#include <exception>

#include "korva/dsp_module.h"

namespace {

struct NoMemory : std::exception {
    [[nodiscard]] const char* what() const noexcept override { return "no memory for a delay"; }
};

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the interface's name
uint8_t ZRDSPAPI_Initialize(DspInstance*, EngineFormat*, EngineFormat*, EngineFormat*) {
    throw NoMemory();
}
