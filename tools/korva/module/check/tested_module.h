// A module as the host loads it, and an instance of it, whose calls are noted for what a check says.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "engine/dsp_module_api.h"
#include "korva/module/check/documents.h"
#include "korva/module/check/guarded_memory.h"
#include "platform/module_library.h"
#include "rt/engine_format.h"

namespace korva::tool {

/// Throws `CheckFailed` with the reason where a file isn't a module that can be loaded.
class TestedModule {
public:
    explicit TestedModule(const std::filesystem::path& modulePath);
    ~TestedModule();
    TestedModule(const TestedModule&) = delete;
    TestedModule& operator=(const TestedModule&) = delete;

    const std::filesystem::path file;
    platform::ModuleLibrary library;
    const engine::DspModuleApi api;
};

/// One instance. It skips what the module lacks, as the host does.  [owner, but for `process`]
class TestedInstance {
public:
    /// Empty if the module made none. The document's text, and what later calls are given, can't be touched
    /// any more once the call has come back. Parameters come in memory of that kind.
    /// An instance that is active is put to rest before it is freed.
    TestedInstance(const TestedModule& module, const Document& document,
                   GuardedMemory::Place parameterPlace = GuardedMemory::Place::loose);
    ~TestedInstance();
    TestedInstance(const TestedInstance&) = delete;
    TestedInstance& operator=(const TestedInstance&) = delete;

    [[nodiscard]] bool exists() const noexcept { return instance != nullptr; }
    [[nodiscard]] const DspInstanceTable* table() const noexcept { return instance->table; }

    /// Why the host lets no sound through it; empty if it does.
    [[nodiscard]] std::string reasonForSilence() const;

    /// What the format tests answer; they may change `requested`. Throws `CheckFailed` where a module
    /// touches more than the records.
    std::uint32_t testInput(rt::EngineFormat& requested, const rt::EngineFormat& opposite);
    std::uint32_t testOutput(rt::EngineFormat& requested, const rt::EngineFormat& opposite);
    std::uint32_t testCapture(rt::EngineFormat& requested);

    bool initialize(const rt::EngineFormat& in, const rt::EngineFormat& out);
    void uninitialize();
    void clear();
    void wakeUp();
    void setInputGain(float gain);
    std::uint32_t isHardwareAvailable();

    void setParameter(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes);

    /// As the module's function. `out` is the caller's.
    std::uint32_t setGetData(std::int32_t bank, std::int32_t id, std::span<const std::byte> in,
                             std::span<std::byte> out);

    /// [audio, rt]
    void process(DspBlock& block) noexcept(false);

private:
    using FormatTest = decltype(&ZRDSPAPI_IsInputFormatSupported);

    std::uint32_t testFormat(FormatTest test, const char* name, rt::EngineFormat& requested,
                             const rt::EngineFormat& opposite);

    const engine::DspModuleApi& api;
    GuardedMemory text;
    GuardedMemory in;
    GuardedMemory out;
    GuardedMemory capture;
    GuardedMemory parameter;
    DspInstance* instance = nullptr;
    bool isActive = false;  ///< Between Initialize and Uninitialize.
};

/// The document that the host would use the module for; else the first that it makes an instance from. Throws
/// `CheckFailed` if there is none.
[[nodiscard]] Document documentFor(const TestedModule& module);

}  // namespace korva::tool
