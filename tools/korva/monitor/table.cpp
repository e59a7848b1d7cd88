#include "korva/monitor/table.h"

#include <algorithm>
#include <array>

#include "korva/monitor/cell_text.h"
#include "korva/monitor/view_text.h"
#include "rt/speakers.h"

namespace korva::tool {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t digitsOfShortName = 8;
constexpr std::size_t cellsOfShortEndpoint = 24;
constexpr std::size_t planeCells = 14;
constexpr std::size_t levelCells = 12;

struct Column {
    const char* heading;
    std::string (*text)(const InstanceView&);
    bool isNumber;
    int rank;  ///< The highest goes first where there is no room.
};

std::string levelOf(const InstanceView& view, MeterSet set) {
    return highestLevelText(view.meters[static_cast<std::size_t>(set)]);
}

constexpr std::array<Column, 15> columns = {
    {{"INSTANCE", [](const InstanceView& v) { return v.name; }, false, 0},
     {"EFFECT", effectText, false, 1},
     {"ENDPOINT", endpointText, false, 4},
     {"INPUT", [](const InstanceView& v) { return sideText(v.input); }, false, 8},
     {"OUTPUT", [](const InstanceView& v) { return sideText(v.output); }, false, 9},
     {"RATE", [](const InstanceView& v) { return numberText(v.sampleRate); }, true, 7},
     {"LIBRARY", [](const InstanceView& v) { return libraryVersionText(v.libraryVersion); }, false, 13},
     {"MODULE", [](const InstanceView& v) { return moduleVersionText(v.moduleVersion); }, false, 14},
     {"STARTS", [](const InstanceView& v) { return numberText(v.engineStarts); }, true, 10},
     {"BUFFER", [](const InstanceView& v) { return numberText(v.bufferMs, " ms"); }, true, 6},
     {"LOAD", [](const InstanceView& v) { return loadText(v.load); }, true, 2},
     {"IN dB", [](const InstanceView& v) { return levelOf(v, MeterSet::input); }, true, 5},
     {"OUT dB", [](const InstanceView& v) { return levelOf(v, MeterSet::output); }, true, 3},
     {"DSP IN dB", [](const InstanceView& v) { return levelOf(v, MeterSet::dspInput); }, true, 12},
     {"DSP OUT dB", [](const InstanceView& v) { return levelOf(v, MeterSet::dspOutput); }, true, 11}}};

struct Texts {
    const Column* column;
    std::vector<std::string> cells;  ///< The heading first.
    std::size_t width = 0;
};

/// The first digits tell instances apart as well; endpoints are cut.
std::string shortened(const Column& column, const std::string& text) {
    if (column.rank == 0 && text.size() > digitsOfShortName) {
        return text.substr(1, digitsOfShortName);
    }
    return column.text == endpointText ? cutTo(text, cellsOfShortEndpoint) : text;
}

Texts textsOf(const Column& column, std::span<const InstanceView> instances, bool isShort) {
    Texts texts{&column, {column.heading}};
    for (const InstanceView& view : instances) {
        const std::string text = column.text(view);
        texts.cells.push_back(isShort ? shortened(column, text) : text);
    }
    for (const std::string& cell : texts.cells) {
        texts.width = std::max(texts.width, cellCount(cell));
    }
    return texts;
}

std::size_t widthOf(const std::vector<Texts>& table) {
    std::size_t width = 0;
    for (const Texts& texts : table) {
        width += texts.width + gap;
    }
    return width - gap;
}

void leaveOutWhatDoesNotFit(std::vector<Texts>& table, std::size_t width) {
    while (table.size() > 1 && widthOf(table) > width) {
        table.erase(
            std::ranges::max_element(table, {}, [](const Texts& texts) { return texts.column->rank; }));
    }
}

std::string lineOf(const std::vector<Texts>& table, std::size_t row) {
    std::string line;
    for (const Texts& texts : table) {
        line += line.empty() ? "" : std::string(gap, ' ');
        line += texts.column->isNumber ? padLeftTo(texts.cells[row], texts.width)
                                       : padTo(texts.cells[row], texts.width);
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

}  // namespace

std::vector<std::string> tableOf(std::span<const InstanceView> instances, std::size_t width) {
    std::vector<Texts> table;
    for (const Column& column : columns) {
        table.push_back(textsOf(column, instances, width != anyWidth));
    }
    leaveOutWhatDoesNotFit(table, width);
    std::vector<std::string> lines;
    for (std::size_t row = 0; row <= instances.size(); ++row) {
        lines.push_back(cutTo(lineOf(table, row), width));
    }
    return lines;
}

std::vector<std::string> levelTableOf(const InstanceView& view) {
    std::vector<std::string> lines = {padTo("dB", planeCells)};
    for (std::size_t set = 0; set < meterSetCount; ++set) {
        lines.front() += padLeftTo(meterSetName(static_cast<MeterSet>(set)), levelCells);
    }
    for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
        std::string& line = lines.emplace_back(padTo(planeName(plane), planeCells));
        for (const Reading<MeterLevels>& meters : view.meters) {
            line += padLeftTo(levelText(meters, plane), levelCells);
        }
    }
    return lines;
}

}  // namespace korva::tool
