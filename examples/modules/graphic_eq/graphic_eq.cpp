// A graphic equaliser of twelve bands: the functions that the host calls. README.md says what it can be set
// to.
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

#include "equaliser.h"
#include "formats.h"
#include "korva/dsp_module.h"

using equaliser::Equaliser;

namespace {

Equaliser& equaliserOf(DspInstance* instance) {
    return *static_cast<Equaliser*>(instance);
}

std::span<const std::byte> bytesAt(const void* data, std::uint32_t size) {
    return {static_cast<const std::byte*>(data), size};
}

}  // namespace

// All that it needs comes as parameters and formats; what the text says makes no difference to it.
DspInstance* ZRDSPAPI_Create(const char*, std::uint32_t) {
    return new (std::nothrow) Equaliser;
}

std::uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    delete &equaliserOf(instance);
    return 0;
}

std::uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance*, EngineFormat* requested, EngineFormat* opposite) {
    return equaliser::testFormat(*requested, *opposite);
}

std::uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance*, EngineFormat* requested,
                                               EngineFormat* opposite) {
    return equaliser::testFormat(*requested, *opposite);
}

std::uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out, EngineFormat*) {
    return equaliserOf(instance).initialize(*in, *out) ? 1 : 0;
}

// Nothing was taken that is to be given back.
void ZRDSPAPI_Uninitialize(DspInstance*) {}

void ZRDSPAPI_Clear(DspInstance* instance, std::int32_t) {
    equaliserOf(instance).clear();
}

std::uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, std::int32_t bank, std::int32_t id, std::int32_t,
                                    const void* data, std::uint32_t size) {
    return equaliserOf(instance).setParameter(bank, id, bytesAt(data, size)) ? 1 : 0;
}

std::uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, std::int32_t bank, std::int32_t id, const void* in,
                                  std::uint32_t inSize, void* out, std::uint32_t outSize) {
    return equaliserOf(instance).setGetData(bank, id, bytesAt(in, inSize),
                                            {static_cast<std::byte*>(out), outSize});
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    equaliserOf(instance).process(*block);
}
