#include "engine/dsp_engine.h"

#include <array>
#include <utility>

#include "engine/module_records.h"
#include "framework/describe_members.h"

namespace korva::engine {
namespace {

/// Gets to see each parameter before the module does.
class ParameterRecorder {
public:
    virtual void record(std::int32_t bank, std::int32_t id, std::int32_t index,
                        std::span<const std::byte> bytes) = 0;

protected:
    ~ParameterRecorder() = default;
};

/// The engine that is made: one whose parameters can be recorded. Nothing sets a recorder so far, nor reads
/// the levels.
class RecordedDspEngine final : public framework::ObjectClass<RecordedDspEngine, DspEngine> {
public:
    using DspEngine::SetParameter;

    std::uint32_t SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                               std::span<const std::byte> bytes) override {
        if (recorder != nullptr) {
            recorder->record(bank, id, index, bytes);
        }
        return DspEngine::SetParameter(bank, id, index, bytes);
    }

private:
    template <class T, class... Arguments>
    friend framework::Ref<T> framework::create(Arguments&&... arguments);

    using Levels = std::array<float, rt::planeCount>;
    static constexpr Levels quiet = {1e-6F, 1e-6F, 1e-6F, 1e-6F, 1e-6F, 1e-6F, 1e-6F, 1e-6F};

    RecordedDspEngine(framework::Ref<const EngineConfigDocument> document,
                      const std::filesystem::path& moduleFolder)
        : framework::ObjectClass<RecordedDspEngine, DspEngine>(std::move(document), moduleFolder) {}

    ParameterRecorder* recorder = nullptr;
    [[maybe_unused]] std::array<Levels, 3> levels = {quiet, quiet, quiet};
};

template <class T>
std::span<const std::byte> bytesOf(const T& value) noexcept {
    return std::as_bytes(std::span(&value, 1));
}

std::uint32_t sizeOf(std::span<const std::byte> bytes) noexcept {
    return static_cast<std::uint32_t>(bytes.size());
}

/// Null for an empty span, wherever it points: a module is promised one form of nothing.
template <class Byte>
Byte* startOf(std::span<Byte> bytes) noexcept {
    return bytes.empty() ? nullptr : bytes.data();
}

}  // namespace

void DspEngine::describeMembers(framework::ClassInfo& info) {
    framework::describe(info, "engineEvent", &DspEngine::engineEvent);
}

DspEngine::DspEngine(framework::Ref<const EngineConfigDocument> document,
                     const std::filesystem::path& moduleFolder)
    : platform(document->platformName()),
      engine(document->engineId()),
      version(document->presetVersion()),
      builtFrom(std::move(document)) {
    loadModule(moduleFolder);
    api = bindDspModuleApi(module);
    createInstance();
}

void DspEngine::loadModule(const std::filesystem::path& folder) {
    for (const std::string& name : builtFrom->platformModuleNames()) {
        module = platform::ModuleLibrary::load(platform::libraryPath(folder, name));
        if (module) {
            return;
        }
    }
}

void DspEngine::createInstance() {
    if (api.Create != nullptr) {
        const std::string text = dumpEngineConfigDocument(*builtFrom);
        instance = api.Create(text.data(), static_cast<std::uint32_t>(text.size()));
    }
}

void DspEngine::onClose() {
    if (instance != nullptr && api.Free != nullptr) {
        api.Free(instance);
    }
    ActiveObject::onClose();
    module.unload();
}

bool DspEngine::isHardwareAvailable() {
    assert(isOwnerThread());
    return instance != nullptr && instance->table->isHardwareAvailable(instance) != 0;
}

std::uint32_t DspEngine::IsInputFormatSupported(rt::EngineFormat& requested, rt::EngineFormat& opposite) {
    return callModule(api.IsInputFormatSupported, asModuleRecord(requested), asModuleRecord(opposite));
}

std::uint32_t DspEngine::IsOutputFormatSupported(rt::EngineFormat& requested, rt::EngineFormat& opposite) {
    return callModule(api.IsOutputFormatSupported, asModuleRecord(requested), asModuleRecord(opposite));
}

std::uint32_t DspEngine::IsCaptureFormatSupported(rt::EngineFormat& requested) {
    return callModule(api.IsCaptureFormatSupported, asModuleRecord(requested));
}

bool DspEngine::Initialize(rt::EngineFormat& inFormat, rt::EngineFormat& outFormat,
                           rt::EngineFormat& captureFormat) {
    return callModule(api.Initialize, asModuleRecord(inFormat), asModuleRecord(outFormat),
                      asModuleRecord(captureFormat)) != 0;
}

void DspEngine::Uninitialize() {
    callModule(api.Uninitialize);
}

void DspEngine::SetInputGain(float gain) {
    callModule(api.SetInputGain, gain);
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, double value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, float value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index, bool value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::int64_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::uint64_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::int32_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::uint32_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::int16_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::uint16_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::int8_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::uint8_t value) {
    return SetParameter(bank, id, index, bytesOf(value));
}

std::uint32_t DspEngine::SetParameter(std::int32_t bank, std::int32_t id, std::int32_t index,
                                      std::span<const std::byte> bytes) {
    return callModule(api.SetParameter, bank, id, index, startOf(bytes), sizeOf(bytes));
}

std::uint32_t DspEngine::SetGetData(std::int32_t bank, std::int32_t id, std::span<const std::byte> in,
                                    std::span<std::byte> out) {
    return callModule(api.SetGetData, bank, id, startOf(in), sizeOf(in), startOf(out), sizeOf(out));
}

void DspEngine::Clear(std::int32_t which) {
    callModule(api.Clear, which);
}

void DspEngine::WakeUp() {
    callModule(api.WakeUp);
}

framework::Ref<DspEngine> createDspEngine(framework::Ref<const EngineConfigDocument> document,
                                          const std::filesystem::path& moduleFolder) {
    return framework::create<RecordedDspEngine>(std::move(document), moduleFolder);
}

}  // namespace korva::engine
