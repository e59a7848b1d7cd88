#include "engine/engine_table.h"

namespace korva::engine {
namespace {

constexpr GUID firstEngine = {0x14A6DE13, 0x1380, 0x0E52, {0xAE, 0xE0, 0x88, 0x03, 0xE9, 0x3E, 0x40, 0xC8}};
constexpr GUID thirdEngine = {0xC9F475BC, 0x13E4, 0x6150, {0xAE, 0x88, 0x79, 0x09, 0x95, 0xAF, 0xC7, 0xC1}};

}  // namespace

std::string_view platformName(EnginePlatform platform) noexcept {
    return platform == EnginePlatform::hardware ? "iSST" : "Float";
}

std::string_view moduleName(const GUID& engineId, EnginePlatform platform) noexcept {
    if (engineId == firstEngine) {
        return platform == EnginePlatform::hardware ? "DRIVOL64" : "TANMER64";
    }
    if (engineId == thirdEngine && platform == EnginePlatform::floatingPoint) {
        return "PELLUX64";
    }
    return {};
}

}  // namespace korva::engine
