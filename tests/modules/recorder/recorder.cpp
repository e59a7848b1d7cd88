// A module that records each call of the host, answers what it is told, and makes everything half as loud.
//
// What it answers, by the names of numbers in KORVA_RECORDER_ANSWERS and what holds without them:
//
//     create=null                      no instance is made
//     free, parameter                  results of Free and SetParameter: 0
//     hardware                         result of the hardware test: 0
//     initialize                       result of Initialize: 1
//     inputFormat, outputFormat, captureFormat
//                                      results of the format tests: 0
//     inputFormatBytes, outputFormatBytes, captureFormatBytes
//                                      what the test writes into `requested`: 56 digits; nothing
//     data:BANK:ID                     the bytes that SetGetData writes, as far as they fit: none
//     count:BANK:ID                    its result: how many these were
//     factor                           what samples are multiplied by: 0.5
//     hold:FUNCTION                    a file: while it is there, a call of that function of the owner's
//                                      doesn't go on, and FILE.reached is made as it begins to wait
//
// KORVA_RECORDER_SAMPLES says how many samples of each plane a block's record has: 8.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "korva/dsp_module.h"
#include "tests/modules/recorder/answers.h"
#include "tests/modules/recorder/call_record.h"
#include "tests/modules/recorder/system.h"

namespace korva::recorder {
namespace {

/// When the library came and went. The end of a process counts as going.
struct Life {
    Life() { const CallRecord record("Load", nullptr); }
    ~Life() { const CallRecord record("Unload", nullptr); }
    Life(const Life&) = delete;
    Life& operator=(const Life&) = delete;
};
const Life life;

/// A call of the owner's thread, which a test may hold back.
class OwnerCall : public CallRecord {
public:
    OwnerCall(const char* function, const void* object) : CallRecord(function, object) { holdBack(function); }
};

void noteFormat(CallRecord& record, const char* name, const EngineFormat* format) {
    record.bytes(name, format, sizeof(EngineFormat));
}

/// What a format test answers; `name` is that of its answer.
std::uint32_t answerFormat(CallRecord& record, const std::string& name, EngineFormat* requested) {
    if (const auto written = bytesAnswer(name + "Bytes")) {
        std::memcpy(requested, written->data(), std::min(written->size(), sizeof(EngineFormat)));
    }
    const std::uint32_t result = numberAnswer(name, KORVA_FORMAT_ACCEPTED);
    record.number("result", result);
    return result;
}

std::uint32_t samplesToNote(const DspBlock& block) {
    const std::string text = environmentText("KORVA_RECORDER_SAMPLES");
    const auto count = text.empty() ? 8UL : std::strtoul(text.c_str(), nullptr, 10);
    return std::min(static_cast<std::uint32_t>(count), block.frames);
}

/// FNV-1a of a plane's bytes.
std::uint64_t digestOf(const float* samples, std::uint32_t frames) {
    std::uint64_t digest = 0xCBF29CE484222325;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(samples);
    for (std::size_t at = 0; at < frames * sizeof(float); ++at) {
        digest = (digest ^ bytes[at]) * 0x100000001B3;
    }
    return digest;
}

void noteBlock(CallRecord& record, const DspBlock& block) {
    record.bytes("block", &block.maxChannels, sizeof(DspBlock) - offsetof(DspBlock, maxChannels));
    for (std::uint32_t plane = 0; plane < KORVA_PLANES; ++plane) {
        const float* const samples = block.channels[plane];
        const std::uint64_t digest = digestOf(samples, block.frames);
        const std::string number = std::to_string(plane);
        record.bytes(("plane" + number).c_str(), samples, samplesToNote(block) * sizeof(float));
        record.bytes(("digest" + number).c_str(), &digest, sizeof(digest));
    }
}

void workOn(const char* function, DspInstance* instance, DspBlock* block) {
    CallRecord record(function, instance);
    noteBlock(record, *block);
    const float factor = factorAnswer("factor", 0.5F);
    for (std::uint32_t plane = 0; plane < KORVA_PLANES; ++plane) {
        std::for_each_n(block->channels[plane], block->frames, [factor](float& sample) { sample *= factor; });
    }
}

void callUnused() {
    const CallRecord record("unused", nullptr);
}

void process(DspInstance* instance, DspBlock* block) {
    workOn("process", instance, block);
}

void capture(DspInstance* instance, DspBlock* block) {
    workOn("capture", instance, block);
}

std::uint32_t isHardwareAvailable(DspInstance* instance) {
    OwnerCall record("isHardwareAvailable", instance);
    const std::uint32_t result = numberAnswer("hardware", 0);
    record.number("result", result);
    return result;
}

constexpr DspInstanceTable table = {{callUnused, callUnused, callUnused, callUnused, callUnused, callUnused,
                                     callUnused, callUnused, callUnused, callUnused, callUnused},
                                    process,
                                    capture,
                                    isHardwareAvailable};

/// What an answer of SetGetData is called in the list.
std::string dataKey(const char* kind, std::int32_t bank, std::int32_t id) {
    return std::string(kind) + ':' + std::to_string(bank) + ':' + std::to_string(id);
}

std::uint32_t answerData(std::int32_t bank, std::int32_t id, void* out, std::uint32_t outSize) {
    std::uint32_t count = 0;
    if (const auto bytes = bytesAnswer(dataKey("data", bank, id)); bytes && out != nullptr) {
        count = std::min(static_cast<std::uint32_t>(bytes->size()), outSize);
        std::memcpy(out, bytes->data(), count);
    }
    return numberAnswer(dataKey("count", bank, id), count);
}

}  // namespace
}  // namespace korva::recorder

using korva::recorder::numberAnswer;
using korva::recorder::OwnerCall;

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    OwnerCall record("Create", nullptr);
    record.bytes("text", text, length);
    const bool isMade = korva::recorder::answer("create") != "null";
    auto instance = isMade ? std::make_unique<DspInstance>(DspInstance{&korva::recorder::table}) : nullptr;
    record.instanceIs(instance.get());
    return instance.release();
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    // Goes behind the record: another instance at its address is recorded later.
    const std::unique_ptr<DspInstance> ended(instance);
    const OwnerCall record("Free", instance);
    return numberAnswer("free", 0);
}

uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                         EngineFormat* opposite) {
    OwnerCall record("IsInputFormatSupported", instance);
    korva::recorder::noteFormat(record, "requested", requested);
    korva::recorder::noteFormat(record, "opposite", opposite);
    return korva::recorder::answerFormat(record, "inputFormat", requested);
}

uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                          EngineFormat* opposite) {
    OwnerCall record("IsOutputFormatSupported", instance);
    korva::recorder::noteFormat(record, "requested", requested);
    korva::recorder::noteFormat(record, "opposite", opposite);
    return korva::recorder::answerFormat(record, "outputFormat", requested);
}

uint32_t ZRDSPAPI_IsCaptureFormatSupported(DspInstance* instance, EngineFormat* requested) {
    OwnerCall record("IsCaptureFormatSupported", instance);
    korva::recorder::noteFormat(record, "requested", requested);
    return korva::recorder::answerFormat(record, "captureFormat", requested);
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    OwnerCall record("Initialize", instance);
    korva::recorder::noteFormat(record, "in", in);
    korva::recorder::noteFormat(record, "out", out);
    korva::recorder::noteFormat(record, "capture", capture);
    return static_cast<uint8_t>(numberAnswer("initialize", 1));
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    const OwnerCall record("Uninitialize", instance);
}

void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    OwnerCall record("Clear", instance);
    record.number("which", which);
}

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    OwnerCall record("SetParameter", instance);
    record.number("bank", bank);
    record.number("id", id);
    record.number("index", index);
    record.number("size", size);
    record.bytes("data", data, size);
    return numberAnswer("parameter", 0);
}

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    OwnerCall record("SetGetData", instance);
    record.number("bank", bank);
    record.number("id", id);
    record.number("inSize", inSize);
    record.bytes("in", in, inSize);
    record.number("outSize", outSize);
    record.number("outIsNull", out == nullptr ? 1 : 0);
    const uint32_t result = korva::recorder::answerData(bank, id, out, outSize);
    record.number("result", result);
    return result;
}

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    const OwnerCall record("WakeUp", instance);
}

void ZRDSPAPI_SetInputGain(DspInstance* instance, float gain) {
    OwnerCall record("SetInputGain", instance);
    record.bytes("gain", &gain, sizeof(gain));
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    korva::recorder::workOn("Process", instance, block);
}

void ZRDSPAPI_Capture(DspInstance* instance, DspBlock* block) {
    korva::recorder::workOn("Capture", instance, block);
}
