// The checks of an instance's life.
#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/footprint.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

/// Does nothing where no sound would come.
void playBlock(TestedInstance& instance, const rt::EngineFormat& format, Bus& bus) {
    if (!instance.reasonForSilence().empty()) {
        return;
    }
    const Scene scene = {.in = format, .out = format};
    const Sound sound = makeNoise(planesOf(format), KORVA_BLOCK_FRAMES, 1);
    static_cast<void>(play(instance, scene, sound, {KORVA_BLOCK_FRAMES}, bus));
}

/// From the beginning to the end of an instance. False if the module made none.
bool live(const TestedModule& module, const Document& document) {
    noteSituation(document.name);
    TestedInstance instance(module, document);
    if (!instance.exists()) {
        return false;
    }
    const rt::EngineFormat format = formatOf(2, 0x3);
    if (accepts(instance, format, format) && instance.initialize(format, format)) {
        instance.uninitialize();
    }
    return true;
}

/// The same with all that a host does meanwhile.
void liveFully(const TestedModule& module, const Document& document, Bus& bus) {
    noteSituation(document.name);
    TestedInstance instance(module, document);
    const rt::EngineFormat format = formatOf(2, 0x3);
    if (!instance.exists() || !accepts(instance, format, format)) {
        return;
    }
    begin(instance, {document, format, format, defaultParameters});
    playBlock(instance, format, bus);
    instance.wakeUp();
    instance.setInputGain(1.0F);
    instance.uninitialize();
}

struct CodeRange {
    std::uintptr_t begin;
    std::uintptr_t end;
};

/// Where this process has code.
std::vector<CodeRange> codeRanges() {
    std::vector<CodeRange> ranges;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream words(line);
        CodeRange range{};
        char dash = 0;
        std::string rights;
        words >> std::hex >> range.begin >> dash >> range.end >> rights;
        if (rights.size() > 2 && rights[2] == 'x') {
            ranges.push_back(range);
        }
    }
    return ranges;
}

void expectCode(std::uintptr_t address, int entry, const std::vector<CodeRange>& ranges) {
    if (address == 0) {
        failCheck("entry {} of the table is empty", entry);
    }
    if (std::ranges::none_of(
            ranges, [&](const CodeRange& range) { return range.begin <= address && address < range.end; })) {
        failCheck("entry {} of the table points to {:#x}, where no function is", entry, address);
    }
}

void expectWholeTable(const DspInstanceTable* table) {
    if (table == nullptr) {
        failCheck("the instance has no table: it begins with a null pointer");
    }
    const std::vector<CodeRange> ranges = codeRanges();
    const auto* const entries = reinterpret_cast<const std::uintptr_t*>(table);
    for (int entry = 0; entry < 14; ++entry) {
        expectCode(entries[entry], entry, ranges);
    }
}

constexpr std::array<std::uint32_t, 13> rates = {8'000,  11'025, 16'000,  22'050,  32'000,  44'100, 48'000,
                                                 88'200, 96'000, 176'400, 192'000, 352'800, 384'000};

/// Gives the count of formats that it was made ready for.
int runPairs(TestedInstance& instance, Bus& bus) {
    int pairs = 0;
    for (const std::uint32_t rate : rates) {
        for (const rt::EngineFormat& format : usualFormats(rate)) {
            noteSituation(formatText(format));
            if (!accepts(instance, format, format)) {
                continue;
            }
            if (!instance.initialize(format, format)) {
                failCheck("ZRDSPAPI_Initialize answers 0 for {}, which was accepted", formatText(format));
            }
            playBlock(instance, format, bus);
            instance.uninitialize();
            ++pairs;
        }
    }
    noteSituation("");
    return pairs;
}

}  // namespace

Verdict checkCreate(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    const std::string name = module.file.stem().string();
    bool madeOne = false;
    for (const Document& document : allDocuments()) {
        const bool made = live(module, document);
        if (!made && document.moduleName == name) {
            failCheck("ZRDSPAPI_Create gives null for the {}, which it is the module of", document.name);
        }
        madeOne = madeOne || made;
    }
    if (!madeOne) {
        failCheck("ZRDSPAPI_Create gives null for every document");
    }
    return {};
}

Verdict checkTable(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    const Document document = documentFor(module);
    TestedInstance instance(module, document);
    const DspInstanceTable* const table = instance.table();
    noteSituation("its table is read");
    expectWholeTable(table);
    noteSituation("");
    static_cast<void>(instance.isHardwareAvailable());
    const rt::EngineFormat format = formatOf(2, 0x3);
    if (accepts(instance, format, format) && instance.initialize(format, format)) {
        instance.uninitialize();
    }
    if (instance.table() != table) {
        failCheck("the instance has another table after ZRDSPAPI_Initialize");
    }
    return {};
}

Verdict checkPairs(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    const Document document = documentFor(module);
    TestedInstance instance(module, document);
    Bus bus(GuardedMemory::Place::loose);
    const std::vector<Document> documents = allDocuments();
    expectNoGrowth("life of an instance for each document", [&] {
        for (const Document& each : documents) {
            liveFully(module, each, bus);
        }
    });
    noteSituation("");
    int pairs = 0;
    expectNoGrowth("round of ZRDSPAPI_Initialize and ZRDSPAPI_Uninitialize",
                   [&] { pairs = runPairs(instance, bus); });
    if (pairs == 0) {
        skipCheck("the module accepts none of the formats that were tried");
    }
    return {};
}

}  // namespace korva::tool
