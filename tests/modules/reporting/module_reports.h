// What the reporting module tells, and asks, of the test that it runs in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "korva/dsp_module.h"

namespace korva::reporting {

/// Holds the address of the test's `ModuleReports` in decimal digits, from before the module is loaded to
/// after it has gone.
inline constexpr const char* variable = "KORVA_MODULE_REPORTS";

/// Hears of one instance. It outlives the instance, so that a call that comes too late is heard, too.
class InstanceReports {
public:
    virtual void freed() = 0;
    virtual void initialized(const EngineFormat& in, const EngineFormat& out) = 0;
    virtual void uninitialized() = 0;
    virtual void parameterCame(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) = 0;
    /// Writes the answer, and tells its count of bytes.
    virtual std::uint32_t dataAsked(std::int32_t bank, std::int32_t id, std::span<std::byte> answer) = 0;
    virtual void cleared() = 0;
    virtual void wokenUp() = 0;
    [[nodiscard]] virtual bool isHardwareAvailable() = 0;
    /// On the audio thread, like no other.
    virtual void processes() noexcept = 0;

protected:
    ~InstanceReports() = default;
};

/// An instance of the module. The test's, like what hears of it; `instance` is the module's to fill.
struct ReportedInstance {
    DspInstance instance;  // first: the host knows no more
    InstanceReports* reports;
};

/// Hears of the module, by the name of its file.
class ModuleReports {
public:
    virtual void loaded(std::string_view module) = 0;
    virtual void unloaded(std::string_view module) = 0;
    /// Null if none shall be made.
    [[nodiscard]] virtual ReportedInstance* created(std::string_view module, std::string_view text) = 0;

protected:
    ~ModuleReports() = default;
};

}  // namespace korva::reporting
