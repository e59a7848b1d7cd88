// The host of one instance of a DSP module.
#pragma once

#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <type_traits>

#include "engine/dsp_module_api.h"
#include "engine/engine_config_document.h"
#include "framework/active_object.h"
#include "framework/object_class.h"
#include "framework/observable.h"
#include "framework/ref.h"
#include "korva/dsp_module.h"
#include "platform/module_library.h"
#include "platform/published/base_types.h"
#include "rt/dsp_block.h"
#include "rt/engine_format.h"
#include "rt/realtime.h"

namespace korva::engine {

/// The index that all parameters are sent with: so far none has several places.
inline constexpr std::int32_t noIndex = -1;

/// A module that is loaded and an instance of it, or one of these, or none: what is missing makes operations
/// do nothing and give 0. Which of them it is stays as the constructor left it.
///
/// Made by `createDspEngine`. Held by `framework::Held`: the last holder's drop closes it, which frees the
/// instance and unloads the module; no operation is called after that.
///
/// Thread safety: all is the owner's but `Process` and `Capture`, which are the audio thread's and may run
/// beside everything but the close.
///
/// Its bases stand in this order so that the audio thread calls `Process` itself, and not a thunk of the
/// compiler's that lies outside the section of real-time code.
class DspEngine : public rt::BlockProcessor,
                  public framework::ObjectClass<DspEngine, framework::ActiveObject> {
public:
    static void describeMembers(framework::ClassInfo& info);

    /// What the engine was built from.
    [[nodiscard]] const EngineConfigDocument& document() const noexcept { return *builtFrom; }
    [[nodiscard]] const std::string& platformName() const noexcept { return platform; }
    [[nodiscard]] const GUID& engineId() const noexcept { return engine; }
    [[nodiscard]] std::uint32_t presetVersion() const noexcept { return version; }

    /// Whether the module has made an instance.
    [[nodiscard]] bool hasInstance() const noexcept { return instance != nullptr; }

    /// Asks the instance for its hardware; false without one.
    [[nodiscard]] bool isHardwareAvailable();

    // The module's operations, as include/korva/dsp_module.h has them.
    [[nodiscard]] virtual std::uint32_t IsInputFormatSupported(rt::EngineFormat& requested,
                                                               rt::EngineFormat& opposite);
    [[nodiscard]] virtual std::uint32_t IsOutputFormatSupported(rt::EngineFormat& requested,
                                                                rt::EngineFormat& opposite);
    [[nodiscard]] virtual std::uint32_t IsCaptureFormatSupported(rt::EngineFormat& requested);
    virtual bool Initialize(rt::EngineFormat& inFormat, rt::EngineFormat& outFormat,
                            rt::EngineFormat& captureFormat);
    virtual void Uninitialize();
    virtual void SetInputGain(float gain);

    // A value's bytes as they are in memory.
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, double value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, float value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, bool value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::int64_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::uint64_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::int32_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::uint32_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::int16_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::uint16_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::int8_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::uint8_t value);
    virtual std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                       std::span<const std::byte> bytes);

    /// The count of bytes that the module wrote to `out`.
    virtual std::uint32_t SetGetData(std::int32_t bank, std::int32_t id, std::span<const std::byte> in,
                                     std::span<std::byte> out);
    virtual void Clear(std::int32_t which);
    virtual void WakeUp();

    /// Hands a block to the instance, unless the module exports no such function.  [audio, rt]
    void Process(rt::DspBlock* block) noexcept KORVA_NONBLOCKING override;
    virtual void Capture(rt::DspBlock* block) noexcept KORVA_NONBLOCKING;

    /// Nothing sets it so far.
    framework::Observable<std::uint32_t> engineEvent{*this};

protected:
    DspEngine(framework::Ref<const EngineConfigDocument> document, const std::filesystem::path& moduleFolder);
    ~DspEngine() override = default;

    void onClose() override;

private:
    void loadModule(const std::filesystem::path& folder);
    void createInstance();

    /// Calls a function of the module with the instance; 0 where one of the two is missing.
    template <class Result, class... Parameters>
    Result callModule(Result (*function)(DspInstance*, Parameters...),
                      std::type_identity_t<Parameters>... arguments) {
        assert(isOwnerThread());
        if (instance == nullptr || function == nullptr) {
            return Result();
        }
        return function(instance, arguments...);
    }

    // Set by the constructor, and constant from there on; the audio thread reads them.
    DspInstance* instance = nullptr;
    DspModuleApi api;

    // A gate of the engine's own behind that of the real-time path, which nobody shuts so far. The audio
    // thread alone writes what is busy, the owner what is blocked.
    std::atomic<std::uint32_t> captureBlocked{0};
    std::atomic<std::uint32_t> captureBusy{0};
    std::atomic<std::uint32_t> processBlocked{0};
    std::atomic<std::uint32_t> processBusy{0};

    std::string platform;
    GUID engine{};
    std::uint32_t version = 0;
    platform::ModuleLibrary module;
    const framework::Ref<const EngineConfigDocument> builtFrom;
};

/// An engine of that document, whose module is looked for in `moduleFolder` and nowhere else. It reports no
/// failure: whoever needs an instance asks `hasInstance`. Raises an exception for a want of memory, and for a
/// document that can't be put into text. Owned by the calling thread.  [owner, blocks]
[[nodiscard]] framework::Ref<DspEngine> createDspEngine(framework::Ref<const EngineConfigDocument> document,
                                                        const std::filesystem::path& moduleFolder);

}  // namespace korva::engine
