#include "tests/engine/module_witness.h"

#include <cstring>

namespace korva::test {

void WitnessedInstance::goFrom(Phase from, Phase to, const char* call) {
    if (phase.load() != from) {
        witness.complain(std::string(call) + " in phase " + std::to_string(static_cast<int>(phase.load())));
    }
    witness.frees += to == Phase::freed ? 1 : 0;
    witness.initializes += to == Phase::active ? 1 : 0;
    phase = to;
}

void WitnessedInstance::expectAlive(const char* call) {
    if (phase.load() == Phase::freed) {
        witness.complain(std::string(call) + " after Free");
    }
}

void WitnessedInstance::initialized(const EngineFormat& in, const EngineFormat& out) {
    goFrom(Phase::created, Phase::active, "Initialize");
    inFormat = in;
    outFormat = out;
}

void WitnessedInstance::parameterCame(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) {
    if (phase.load() != Phase::active) {
        witness.complain("SetParameter outside of Initialize and Uninitialize");
    }
    parameters[{bank, id}].assign(bytes.begin(), bytes.end());
}

std::uint32_t WitnessedInstance::dataAsked(std::int32_t bank, std::int32_t id, std::span<std::byte> answer) {
    expectAlive("SetGetData");
    if (bank == KORVA_BANK_ENGINE && id == KORVA_DATA_MODULE_VERSION && answer.size() == 4) {
        std::memcpy(answer.data(), &witness.answers.version, 4);
        return witness.answers.countsAreWrong ? 3 : 4;
    }
    return witness.answers.countsAreWrong ? 5 : 0;
}

void WitnessedInstance::cleared() {
    expectAlive("Clear");
    ++witness.clears;
}

void WitnessedInstance::wokenUp() {
    expectAlive("WakeUp");
    ++wakes;
}

bool WitnessedInstance::isHardwareAvailable() {
    expectAlive("the hardware test");
    if (module != "DRIVOL64") {
        witness.complain("the hardware test of " + module);
    }
    return witness.answers.hardware;
}

void WitnessedInstance::processes() noexcept {
    if (phase.load() != Phase::active) {
        witness.complain("process outside of Initialize and Uninitialize");
    }
    ++witness.blocks;
}

void ModuleWitness::loaded(std::string_view module) {
    ++loadedNow[std::string(module)];
}

void ModuleWitness::unloaded(std::string_view module) {
    --loadedNow[std::string(module)];
}

reporting::ReportedInstance* ModuleWitness::created(std::string_view module, std::string_view text) {
    ++creates;
    if (!text.starts_with('{') || !text.ends_with('}')) {
        complain("Create without a document");
    }
    if (answers.createsNull) {
        return nullptr;
    }
    return &instances.emplace_back(*this, std::string(module)).reported;
}

void ModuleWitness::complain(const std::string& what) {
    const std::lock_guard guard(mutex);
    if (complained.size() < 2000) {
        complained += what + '\n';
    }
}

std::string ModuleWitness::complaints() const {
    const std::lock_guard guard(mutex);
    return complained;
}

std::vector<WitnessedInstance*> ModuleWitness::live() {
    // Those that have been freed are known only for what comes too late; the newest are enough for that.
    while (instances.size() > 100 && instances.front().phase.load() == WitnessedInstance::Phase::freed) {
        instances.pop_front();
    }
    std::vector<WitnessedInstance*> alive;
    for (WitnessedInstance& instance : instances) {
        if (instance.phase.load() != WitnessedInstance::Phase::freed) {
            alive.push_back(&instance);
        }
    }
    return alive;
}

}  // namespace korva::test
