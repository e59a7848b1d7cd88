#include "korva/module/check/tested_module.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "engine/module_records.h"
#include "korva/module/check/check_report.h"
#include "korva/module/library_file.h"

namespace korva::tool {
namespace {

/// A parameter's bytes at most, and some more.
constexpr std::size_t parameterCapacity = 1 << 16;

/// The loader's words for what it did last on this thread, without the path that it begins them with.
std::string loaderReason(const std::filesystem::path& file) {
    const char* const words = dlerror();
    const std::string reason = words == nullptr ? "the loader gives no reason" : words;
    const std::string prefix = file.string() + ": ";
    return reason.starts_with(prefix) ? reason.substr(prefix.size()) : reason;
}

platform::ModuleLibrary loadOrFail(const std::filesystem::path& file) {
    if (const std::string fault = readLibraryFile(file.string()).fault; !fault.empty()) {
        failCheck("can't be loaded: {}", fault);
    }
    const NotedCall noted("the library's own start");
    platform::ModuleLibrary library = platform::ModuleLibrary::load(file);
    if (!library) {
        failCheck("can't be loaded: {}", loaderReason(file));
    }
    return library;
}

void put(const rt::EngineFormat& format, GuardedMemory& memory) {
    memory.allow();
    std::memcpy(memory.data(), &format, sizeof(format));
}

rt::EngineFormat formatIn(const GuardedMemory& memory) {
    rt::EngineFormat format;
    std::memcpy(&format, memory.data(), sizeof(format));
    return format;
}

::EngineFormat* recordIn(const GuardedMemory& memory) {
    return reinterpret_cast<::EngineFormat*>(memory.data());
}

std::string afterReturnOf(const char* call) {
    return fmt::format("after {} has come back", call);
}

constexpr auto atPageEnd = GuardedMemory::Place::atPageEnd;

}  // namespace

TestedModule::TestedModule(const std::filesystem::path& modulePath)
    : file(std::filesystem::absolute(modulePath)),
      library(loadOrFail(file)),
      api(engine::bindDspModuleApi(library)) {}

TestedModule::~TestedModule() {
    if (std::uncaught_exceptions() != 0) {
        // What was thrown may be of a class of the library's, which stays until the process of the check
        // ends.
        static_cast<void>(new platform::ModuleLibrary(std::move(library)));
        return;
    }
    const NotedCall noted("the library's own end");
    library.unload();
}

TestedInstance::TestedInstance(const TestedModule& module, const Document& document,
                               GuardedMemory::Place parameterPlace)
    : api(module.api),
      text(document.text.size(), atPageEnd, "the text of its document"),
      in(sizeof(rt::EngineFormat), atPageEnd, "a format record"),
      out(sizeof(rt::EngineFormat), atPageEnd, "a format record"),
      capture(sizeof(rt::EngineFormat), atPageEnd, "a format record"),
      parameter(parameterCapacity, parameterPlace, "a parameter's bytes") {
    if (api.Create == nullptr) {
        failCheck("exports no ZRDSPAPI_Create");
    }
    std::memcpy(text.data(), document.text.data(), document.text.size());
    const NotedCall noted("ZRDSPAPI_Create");
    instance = api.Create(reinterpret_cast<const char*>(text.data()),
                          static_cast<std::uint32_t>(document.text.size()));
    text.expectRestWhole();
    text.forbid(afterReturnOf("ZRDSPAPI_Create"));
}

TestedInstance::~TestedInstance() {
    // After a failure the process of the check ends, and the module isn't asked for more.
    if (instance == nullptr || std::uncaught_exceptions() != 0) {
        return;
    }
    if (isActive) {
        uninitialize();
    }
    if (api.Free != nullptr) {
        const NotedCall noted("ZRDSPAPI_Free");
        api.Free(instance);
    }
}

std::string TestedInstance::reasonForSilence() const {
    if (api.Process == nullptr) {
        return "no sound goes through a module without ZRDSPAPI_Process";
    }
    const bool hasEntry = instance->table != nullptr && instance->table->process != nullptr;
    return hasEntry ? "" : "no sound goes through a table without entry 11";
}

std::uint32_t TestedInstance::testFormat(FormatTest test, const char* name, rt::EngineFormat& requested,
                                         const rt::EngineFormat& opposite) {
    if (test == nullptr) {
        return KORVA_FORMAT_ACCEPTED;
    }
    put(requested, in);
    put(opposite, out);
    const NotedCall noted(name);
    const std::uint32_t answer = test(instance, recordIn(in), recordIn(out));
    in.expectRestWhole();
    out.expectRestWhole();
    if (formatIn(out) != opposite) {
        failCheck("changes the format of the opposite side{}", whereText());
    }
    requested = formatIn(in);
    in.forbid(afterReturnOf(name));
    out.forbid(afterReturnOf(name));
    return answer;
}

std::uint32_t TestedInstance::testInput(rt::EngineFormat& requested, const rt::EngineFormat& opposite) {
    return testFormat(api.IsInputFormatSupported, "ZRDSPAPI_IsInputFormatSupported", requested, opposite);
}

std::uint32_t TestedInstance::testOutput(rt::EngineFormat& requested, const rt::EngineFormat& opposite) {
    return testFormat(api.IsOutputFormatSupported, "ZRDSPAPI_IsOutputFormatSupported", requested, opposite);
}

std::uint32_t TestedInstance::testCapture(rt::EngineFormat& requested) {
    if (api.IsCaptureFormatSupported == nullptr) {
        return KORVA_FORMAT_ACCEPTED;
    }
    put(requested, in);
    constexpr const char* name = "ZRDSPAPI_IsCaptureFormatSupported";
    const NotedCall noted(name);
    const std::uint32_t answer = api.IsCaptureFormatSupported(instance, recordIn(in));
    in.expectRestWhole();
    requested = formatIn(in);
    in.forbid(afterReturnOf(name));
    return answer;
}

bool TestedInstance::initialize(const rt::EngineFormat& inFormat, const rt::EngineFormat& outFormat) {
    if (api.Initialize == nullptr) {
        return true;
    }
    put(inFormat, in);
    put(outFormat, out);
    put({}, capture);
    isActive = true;
    constexpr const char* name = "ZRDSPAPI_Initialize";
    const NotedCall noted(name);
    const bool could = api.Initialize(instance, recordIn(in), recordIn(out), recordIn(capture)) != 0;
    for (GuardedMemory* const record : {&in, &out, &capture}) {
        record->expectRestWhole();
        record->forbid(afterReturnOf(name));
    }
    return could;
}

void TestedInstance::uninitialize() {
    isActive = false;
    if (api.Uninitialize != nullptr) {
        const NotedCall noted("ZRDSPAPI_Uninitialize");
        api.Uninitialize(instance);
    }
}

void TestedInstance::clear() {
    if (api.Clear != nullptr) {
        constexpr std::int32_t everything = -1;
        const NotedCall noted("ZRDSPAPI_Clear");
        api.Clear(instance, everything);
    }
}

void TestedInstance::wakeUp() {
    if (api.WakeUp != nullptr) {
        const NotedCall noted("ZRDSPAPI_WakeUp");
        api.WakeUp(instance);
    }
}

void TestedInstance::setInputGain(float gain) {
    if (api.SetInputGain != nullptr) {
        const NotedCall noted("ZRDSPAPI_SetInputGain");
        api.SetInputGain(instance, gain);
    }
}

std::uint32_t TestedInstance::isHardwareAvailable() {
    const NotedCall noted("entry 13 of the table");
    return instance->table->isHardwareAvailable(instance);
}

void TestedInstance::setParameter(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) {
    if (api.SetParameter == nullptr) {
        return;
    }
    std::byte* data = nullptr;
    if (!bytes.empty()) {
        parameter.allow();
        data = parameter.data() + parameterCapacity - bytes.size();
        std::memcpy(data, bytes.data(), bytes.size());
    }
    constexpr const char* name = "ZRDSPAPI_SetParameter";
    const NotedCall noted(name);
    constexpr std::int32_t noIndex = -1;
    api.SetParameter(instance, bank, id, noIndex, data, static_cast<std::uint32_t>(bytes.size()));
    if (data != nullptr) {
        parameter.forbid(afterReturnOf(name));
    }
}

std::uint32_t TestedInstance::setGetData(std::int32_t bank, std::int32_t id,
                                         std::span<const std::byte> inBytes, std::span<std::byte> outBytes) {
    if (api.SetGetData == nullptr) {
        return 0;
    }
    const NotedCall noted("ZRDSPAPI_SetGetData");
    return api.SetGetData(instance, bank, id, inBytes.data(), static_cast<std::uint32_t>(inBytes.size()),
                          outBytes.data(), static_cast<std::uint32_t>(outBytes.size()));
}

void TestedInstance::process(DspBlock& block) {
    const NotedCall noted("process");
    instance->table->process(instance, &block);
}

Document documentFor(const TestedModule& module) {
    const std::string name = module.file.stem().string();
    std::vector<Document> documents = allDocuments();
    std::ranges::stable_partition(documents, [&](const Document& each) { return each.moduleName == name; });
    for (const Document& document : documents) {
        noteSituation(document.name);
        if (TestedInstance(module, document).exists()) {
            noteSituation("");
            return document;
        }
    }
    failCheck("ZRDSPAPI_Create gives null for every document");
}

}  // namespace korva::tool
