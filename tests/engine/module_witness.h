// What the reporting module (tests/modules/reporting) has been called for, and how it answers.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mutex.h"
#include "tests/engine/walk_model.h"
#include "tests/modules/reporting/module_reports.h"
#include "tests/support/environment.h"

namespace korva::test {

/// One instance, from Create on; it never goes, so that it hears what comes too late. All calls are the
/// owner's but `processes`.
class WitnessedInstance final : public reporting::InstanceReports {
public:
    enum class Phase { created, active, freed };

    WitnessedInstance(class ModuleWitness& all, std::string file) : module(std::move(file)), witness(all) {
        reported.reports = this;
    }

    void freed() override { goFrom(Phase::created, Phase::freed, "Free"); }
    void initialized(const EngineFormat& in, const EngineFormat& out) override;
    void uninitialized() override { goFrom(Phase::active, Phase::created, "Uninitialize"); }
    void parameterCame(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) override;
    std::uint32_t dataAsked(std::int32_t bank, std::int32_t id, std::span<std::byte> answer) override;
    void cleared() override;
    void wokenUp() override;
    bool isHardwareAvailable() override;
    void processes() noexcept override;

    const std::string module;
    reporting::ReportedInstance reported{};
    std::map<ParameterName, Bytes> parameters;  ///< The last bytes of each.
    int wakes = 0;
    EngineFormat inFormat{};
    EngineFormat outFormat{};
    std::atomic<Phase> phase{Phase::created};

private:
    void goFrom(Phase from, Phase to, const char* call);
    void expectAlive(const char* call);

    class ModuleWitness& witness;
};

/// All modules of this process, and their instances. One at a time.
class ModuleWitness final : public reporting::ModuleReports {
public:
    ModuleWitness()
        : address(reporting::variable, std::to_string(reinterpret_cast<std::uintptr_t>(
                                           static_cast<reporting::ModuleReports*>(this)))) {}

    void loaded(std::string_view module) override;
    void unloaded(std::string_view module) override;
    [[nodiscard]] reporting::ReportedInstance* created(std::string_view module,
                                                       std::string_view text) override;

    /// Notes what must not be.  [any]
    void complain(const std::string& what);
    /// All complaints, a line each.  [any]
    [[nodiscard]] std::string complaints() const;

    // The owner's.
    [[nodiscard]] std::vector<WitnessedInstance*> live();
    ModuleAnswers answers;
    std::map<std::string, int, std::less<>> loadedNow;
    int creates = 0;
    int frees = 0;
    int clears = 0;
    int initializes = 0;

    std::atomic<std::uint64_t> blocks{0};  ///< The audio thread's.

private:
    EnvironmentVariable address;
    mutable platform::Mutex mutex;
    std::string complained;
    std::deque<WitnessedInstance> instances;
};

}  // namespace korva::test
