#include "tests/support/call_text.h"

#include <cstdint>
#include <cstring>

#include "korva/dsp_module.h"

namespace korva::test {
namespace {

std::string formatText(const RecordedCall& call, const std::string& name) {
    const auto bytes = call.bytes(name).value();
    EngineFormat format{};
    std::memcpy(&format, bytes.data(), sizeof(format));
    std::string mask;
    for (std::uint32_t rest = format.channelMask; rest != 0 || mask.empty(); rest /= 16) {
        mask.insert(mask.begin(), "0123456789abcdef"[rest % 16]);
    }
    return std::to_string(format.channelCount) + "ch " + std::to_string(format.sampleRate) + ' ' + mask;
}

std::string numberText(const RecordedCall& call) {
    return std::to_string(call.number("bank")) + ':' + std::to_string(call.number("id"));
}

std::string indexText(const RecordedCall& call) {
    return call.number("index") == -1 ? std::string() : '[' + std::to_string(call.number("index")) + ']';
}

std::string dataText(const RecordedCall& call) {
    std::string text = numberText(call);
    if (call.number("inSize") != 0) {
        text += " in " + call.words.at("in");
    }
    if (call.number("outSize") != 0) {
        text += " out " + std::to_string(call.number("outSize"));
    }
    return text;
}

std::string argumentsText(const RecordedCall& call) {
    if (call.function == "Initialize") {
        return ' ' + formatText(call, "in") + ", " + formatText(call, "out") + ", " +
               formatText(call, "capture");
    }
    if (call.function == "SetParameter") {
        return ' ' + numberText(call) + indexText(call) + ' ' + call.words.at("data");
    }
    if (call.function == "SetGetData") {
        return ' ' + dataText(call);
    }
    if (call.function == "Clear") {
        return ' ' + std::to_string(call.number("which"));
    }
    if (call.function == "isHardwareAvailable") {
        return ' ' + std::to_string(call.number("result"));
    }
    return {};
}

}  // namespace

std::string textOf(const RecordedCall& call) {
    const bool isOfLibrary = call.function == "Load" || call.function == "Unload";
    return call.function + ' ' + (isOfLibrary ? call.module : '#' + std::to_string(call.instance)) +
           argumentsText(call);
}

std::vector<std::string> textsOf(const std::vector<RecordedCall>& calls) {
    std::vector<std::string> texts;
    for (const RecordedCall& call : calls) {
        texts.push_back(textOf(call));
    }
    return texts;
}

std::string parameterText(int instance, int bank, int id, std::span<const std::byte> bytes) {
    std::string text = "SetParameter #" + std::to_string(instance) + ' ' + std::to_string(bank) + ':' +
                       std::to_string(id) + ' ';
    for (const std::byte byte : bytes) {
        text += "0123456789abcdef"[std::to_integer<unsigned>(byte) / 16];
        text += "0123456789abcdef"[std::to_integer<unsigned>(byte) % 16];
    }
    return text;
}

}  // namespace korva::test
