// A module that does what the test says in which it runs, and makes everything half as loud. It keeps nothing
// itself, so a walk of many thousand calls costs no more than they do.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "korva/dsp_module.h"
#include "tests/modules/recorder/system.h"
#include "tests/modules/reporting/module_reports.h"

namespace korva::reporting {
namespace {

ModuleReports& test() {
    static auto* const reports = reinterpret_cast<ModuleReports*>(
        static_cast<std::uintptr_t>(std::stoull(recorder::environmentText(variable))));
    return *reports;
}

/// Tells when the library comes and goes.
struct Life {
    Life() : name(recorder::ownName()) { test().loaded(name); }
    ~Life() { test().unloaded(name); }
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;

    const std::string name;
};
const Life life;

InstanceReports& reportsOf(DspInstance* instance) {
    return *reinterpret_cast<ReportedInstance*>(instance)->reports;
}

void doNothing() {}

void process(DspInstance* instance, DspBlock* block) {
    reportsOf(instance).processes();
    for (std::uint32_t plane = 0; plane < KORVA_PLANES; ++plane) {
        std::for_each_n(block->channels[plane], block->frames, [](float& sample) { sample *= 0.5F; });
    }
}

std::uint32_t isHardwareAvailable(DspInstance* instance) {
    return reportsOf(instance).isHardwareAvailable() ? 1 : 0;
}

constexpr DspInstanceTable table = {{doNothing, doNothing, doNothing, doNothing, doNothing, doNothing,
                                     doNothing, doNothing, doNothing, doNothing, doNothing},
                                    process,
                                    process,
                                    isHardwareAvailable};

}  // namespace
}  // namespace korva::reporting

using korva::reporting::reportsOf;

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    using namespace korva::reporting;
    ReportedInstance* const made = test().created(life.name, {text, length});
    if (made == nullptr) {
        return nullptr;
    }
    made->instance.table = &table;
    return &made->instance;
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    reportsOf(instance).freed();
    return 0;
}

uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance*, EngineFormat*, EngineFormat*) {
    return KORVA_FORMAT_ACCEPTED;
}

uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance*, EngineFormat*, EngineFormat*) {
    return KORVA_FORMAT_ACCEPTED;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out, EngineFormat*) {
    reportsOf(instance).initialized(*in, *out);
    return 1;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    reportsOf(instance).uninitialized();
}

void ZRDSPAPI_Clear(DspInstance* instance, int32_t) {
    reportsOf(instance).cleared();
}

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t, const void* data,
                               uint32_t size) {
    reportsOf(instance).parameterCame(bank, id, {static_cast<const std::byte*>(data), size});
    return 0;
}

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void*, uint32_t,
                             void* out, uint32_t outSize) {
    return reportsOf(instance).dataAsked(bank, id, {static_cast<std::byte*>(out), outSize});
}

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    reportsOf(instance).wokenUp();
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    korva::reporting::process(instance, block);
}
