#include "korva/monitor/picture.h"

#include <fmt/core.h>

#include <algorithm>
#include <bit>

#include "korva/monitor/cell_text.h"
#include "korva/monitor/decibels.h"
#include "korva/monitor/table.h"
#include "korva/monitor/view_text.h"
#include "rt/speakers.h"

namespace korva::tool {
namespace {

constexpr std::size_t wideEnough = 60;  ///< Cells from which on planes have whole names.
constexpr std::size_t detailLabelCells = 14;
constexpr std::size_t detailCells = 58;  ///< Of one detail, where two stand side by side.
constexpr std::size_t levelCells = 6;    ///< "-120.5"
constexpr float loudFrom = -12.0F;
constexpr float overFrom = -1.0F;

/// How many rows each part gets.
struct Rows {
    std::size_t instances = 0;  ///< Without the headings.
    std::size_t meters = 0;     ///< With the line above them.
    std::size_t details = 0;
};

Rows shareRows(std::size_t available, std::size_t instances, std::size_t meters, std::size_t details) {
    Rows rows;
    const std::size_t headings = available > 0 ? 1 : 0;
    rows.instances = std::min({instances, std::max<std::size_t>(1, available / 4), available - headings});
    available -= headings + rows.instances;
    rows.meters = std::min(meters, available);
    rows.details = std::min(details, available - rows.meters);
    return rows;
}

const StreamSide& sideOf(const InstanceView& view, MeterSet set) {
    switch (set) {
        case MeterSet::input:
            return view.input;
        case MeterSet::output:
            return view.output;
        case MeterSet::dspInput:
            return view.dspInput;
        case MeterSet::dspOutput:
            return view.dspOutput;
    }
    return view.input;
}

/// The planes that the set's speakers land on; all of them where the key doesn't tell.
std::vector<std::size_t> planesOf(const InstanceView& view, MeterSet set) {
    std::uint32_t found = 0;
    for (std::uint32_t mask = sideOf(view, set).mask.value.value_or(0); mask != 0; mask &= mask - 1) {
        found |= 1U << rt::planeOfBit(std::countr_zero(mask));
    }
    std::vector<std::size_t> planes;
    for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
        if (found == 0 || (found >> plane & 1U) != 0) {
            planes.push_back(plane);
        }
    }
    return planes;
}

Style styleOf(float level) {
    return level >= overFrom ? Style::over : level >= loudFrom ? Style::loud : Style::quiet;
}

/// A bar with the held peak on it: in each of its parts the colour of the levels there.
void addBar(PictureLine& line, float level, float held, std::size_t cells, bool unicode) {
    const std::size_t filled = barLength(level, cells);
    const std::size_t heldAt = barLength(held, cells);
    const auto styleAt = [&](std::size_t cell) {
        const float part = static_cast<float>(cell + 1) / static_cast<float>(cells);
        return styleOf(barFloor * (1.0F - part));
    };
    for (std::size_t cell = 0; cell < cells; ++cell) {
        const bool isHeld = cell + 1 == heldAt && cell >= filled;
        const char* const shown = isHeld          ? (unicode ? "│" : "|")
                                  : cell < filled ? (unicode ? "█" : "#")
                                                  : (unicode ? "·" : ".");
        const Style style = isHeld || cell < filled ? styleAt(cell) : Style::faint;
        if (line.empty() || line.back().style != style) {
            line.push_back({"", style});
        }
        line.back().text += shown;
    }
}

PictureLine meterLine(const Scene& scene, const InstanceView& view, std::size_t plane, std::size_t columns) {
    const bool isWide = columns >= wideEnough;
    const Reading<MeterLevels>& meters = view.meters[static_cast<std::size_t>(scene.meterSet)];
    const float level = decibels(meters.value ? (*meters.value)[plane] : 0.0F);
    PictureLine line = {{padTo(isWide ? planeName(plane) : shortPlaneName(plane), isWide ? 14 : 3)},
                        {padLeftTo(levelText(meters, plane), levelCells) + " "}};
    const std::size_t used = cellCount(line) + levelCells + 2;
    if (columns > used) {
        addBar(line, level, scene.heldPeaks[plane], columns - used, scene.unicode);
    }
    line.push_back({" " + padLeftTo(decibelText(scene.heldPeaks[plane]), levelCells)});
    return line;
}

PictureLine meterTitle(const Scene& scene, std::size_t columns) {
    PictureLine line;
    for (std::size_t i = 0; i < meterSetCount; ++i) {
        const auto set = static_cast<MeterSet>(i);
        line.push_back({fmt::format(" {} {} ", i + 1, meterSetName(set)),
                        set == scene.meterSet ? Style::selected : Style::plain});
    }
    if (columns >= wideEnough) {
        line.push_back({"  dB, and the peak", Style::faint});
    }
    return line;
}

std::string loadWithHistory(const Scene& scene, const std::string& load) {
    return scene.loadHistory.empty() ? load : padTo(load, 8) + scene.loadHistory;
}

std::vector<std::string> detailTexts(const Scene& scene, std::size_t columns) {
    std::vector<std::string> texts;
    for (const auto& [label, text] : detailsOf(scene.instances[scene.selected])) {
        const std::string shown = label == "Load" ? loadWithHistory(scene, text) : text;
        texts.push_back(padTo(label, detailLabelCells) +
                        cutTo(shown, columns - std::min(columns, detailLabelCells)));
    }
    return texts;
}

/// In two columns, the first half left, where there is room for two.
std::vector<std::string> detailLines(const Scene& scene, std::size_t columns) {
    const bool isDouble = columns >= 2 * detailCells;
    const std::vector<std::string> texts = detailTexts(scene, isDouble ? detailCells - 2 : columns);
    if (!isDouble) {
        return texts;
    }
    const std::size_t half = (texts.size() + 1) / 2;
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < half; ++i) {
        lines.push_back(padTo(texts[i], detailCells) + (half + i < texts.size() ? texts[half + i] : ""));
    }
    return lines;
}

void addInstances(Picture& picture, const Scene& scene, std::size_t rows, std::size_t columns) {
    const std::vector<std::string> table = tableOf(scene.instances, columns);
    picture.push_back({{table.front(), Style::faint}});
    // The list moves so that the chosen one is always in sight.
    const std::size_t first = scene.selected < rows ? 0 : scene.selected - rows + 1;
    for (std::size_t i = first; i < first + rows; ++i) {
        const bool isSelected = i == scene.selected;
        picture.push_back({{isSelected ? padTo(table[i + 1], columns) : table[i + 1],
                            isSelected ? Style::selected : Style::plain}});
    }
}

void addParts(Picture& picture, const Scene& scene, ScreenSize size, std::size_t available) {
    const InstanceView& view = scene.instances[scene.selected];
    const std::vector<std::size_t> planes = planesOf(view, scene.meterSet);
    const std::vector<std::string> details = detailLines(scene, size.columns);
    const Rows rows = shareRows(available, scene.instances.size(), planes.size() + 1, details.size());
    addInstances(picture, scene, rows.instances, size.columns);
    const std::size_t used = 1 + rows.instances + rows.meters + rows.details;
    std::size_t gaps = available > used ? available - used : 0;
    const auto addGap = [&] {
        if (gaps > 0) {
            picture.emplace_back();
            --gaps;
        }
    };
    addGap();
    for (std::size_t i = 0; i < rows.details; ++i) {
        picture.push_back({{details[i]}});
    }
    addGap();
    for (std::size_t i = 0; i < rows.meters; ++i) {
        picture.push_back(i == 0 ? meterTitle(scene, size.columns)
                                 : meterLine(scene, view, planes[i - 1], size.columns));
    }
}

PictureLine fitted(const PictureLine& line, std::size_t columns, bool unicode) {
    PictureLine cut;
    std::size_t used = 0;
    for (const StyledText& part : line) {
        const std::string text = cutTo(unicode ? part.text : asAscii(part.text), columns - used);
        used += cellCount(text);
        if (!text.empty()) {
            cut.push_back({text, part.style});
        }
    }
    return cut;
}

}  // namespace

std::size_t cellCount(const PictureLine& line) {
    std::size_t cells = 0;
    for (const StyledText& part : line) {
        cells += cellCount(part.text);
    }
    return cells;
}

Picture pictureOf(const Scene& scene, ScreenSize size) {
    constexpr const char* keys = "up/down: choose  tab, 1-4: levels  q: quit";
    Picture picture = {{{scene.title, Style::title}}};
    if (!scene.notice.empty()) {
        picture.push_back({{scene.notice, Style::over}});
    }
    const std::size_t taken = picture.size() + 1;
    const std::size_t available = size.rows > taken ? size.rows - taken : 0;
    if (scene.instances.empty() && available > 0) {
        picture.push_back({{"no live instance"}});
    } else if (available > 1) {
        addParts(picture, scene, size, available);
    }
    picture.resize(std::max<std::size_t>(size.rows, 1) - 1);
    picture.push_back({{keys, Style::faint}});
    for (PictureLine& line : picture) {
        line = fitted(line, size.columns, scene.unicode);
    }
    return picture;
}

}  // namespace korva::tool
