#include "tests/modules/recorder/answers.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/modules/recorder/system.h"

namespace korva::recorder {
namespace {

std::optional<std::string> valueIn(std::string_view list, const std::string& key) {
    while (!list.empty()) {
        const std::string_view item = list.substr(0, list.find(','));
        if (item.starts_with(key + '=')) {
            return std::string(item.substr(key.size() + 1));
        }
        list.remove_prefix(item.size() == list.size() ? item.size() : item.size() + 1);
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> answer(std::string_view key) {
    const std::string list = environmentText("KORVA_RECORDER_ANSWERS");
    if (list.empty()) {
        return std::nullopt;
    }
    std::optional<std::string> own = valueIn(list, ownName() + '.' + std::string(key));
    return own ? own : valueIn(list, std::string(key));
}

std::uint32_t numberAnswer(std::string_view key, std::uint32_t otherwise) {
    const std::optional<std::string> value = answer(key);
    return value ? static_cast<std::uint32_t>(std::strtoull(value->c_str(), nullptr, 0)) : otherwise;
}

float factorAnswer(std::string_view key, float otherwise) {
    const std::optional<std::string> value = answer(key);
    return value ? std::strtof(value->c_str(), nullptr) : otherwise;
}

std::optional<std::vector<std::uint8_t>> bytesAnswer(std::string_view key) {
    const std::optional<std::string> digits = answer(key);
    if (!digits) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at + 1 < digits->size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::strtoul(digits->substr(at, 2).c_str(), nullptr, 16)));
    }
    return bytes;
}

void holdBack(std::string_view function) {
    const std::optional<std::string> file = answer("hold:" + std::string(function));
    if (!file || !std::filesystem::exists(*file)) {
        return;
    }
    std::ofstream(*file + ".reached") << function;
    while (std::filesystem::exists(*file)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace korva::recorder
