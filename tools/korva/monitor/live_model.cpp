#include "korva/monitor/live_model.h"

#include <algorithm>
#include <utility>

namespace korva::tool {
namespace {

std::size_t indexOf(const std::vector<InstanceView>& instances, const std::string& name,
                    std::size_t otherwise) {
    const auto found = std::ranges::find(instances, name, &InstanceView::name);
    return found == instances.end() ? otherwise : static_cast<std::size_t>(found - instances.begin());
}

}  // namespace

void LiveModel::take(Refresh refresh, std::chrono::steady_clock::time_point now) {
    shown = std::move(refresh);
    std::map<std::string, Past> kept;
    for (const InstanceView& view : shown.instances) {
        Past& past = kept[view.name] = std::move(pasts[view.name]);
        past.loads.add(view.load.value.value_or(0));
        for (std::size_t i = 0; i < meterSetCount; ++i) {
            past.peaks[i].update(view.meters[i].value.value_or(MeterLevels{}), now);
        }
    }
    pasts = std::move(kept);
    choose(indexOf(shown.instances, chosen, chosenIndex));
}

void LiveModel::choose(std::size_t index) {
    chosenIndex = shown.instances.empty() ? 0 : std::min(index, shown.instances.size() - 1);
    chosen = shown.instances.empty() ? "" : shown.instances[chosenIndex].name;
}

void LiveModel::press(MonitorKey key) {
    switch (key) {
        case MonitorKey::up:
            choose(chosenIndex - std::min<std::size_t>(chosenIndex, 1));
            break;
        case MonitorKey::down:
            choose(chosenIndex + 1);
            break;
        case MonitorKey::nextMeters:
            meterSet = static_cast<MeterSet>((static_cast<std::size_t>(meterSet) + 1) % meterSetCount);
            break;
        case MonitorKey::meters1:
        case MonitorKey::meters2:
        case MonitorKey::meters3:
        case MonitorKey::meters4:
            meterSet = static_cast<MeterSet>(static_cast<int>(key) - static_cast<int>(MonitorKey::meters1));
            break;
        case MonitorKey::quit:
        case MonitorKey::other:
            break;
    }
}

Picture LiveModel::picture(ScreenSize size, const std::string& title, const std::string& notice,
                           bool unicode) const {
    Scene scene{.title = title,
                .notice = notice,
                .instances = shown.instances,
                .selected = chosenIndex,
                .meterSet = meterSet,
                .unicode = unicode};
    if (const auto past = pasts.find(chosen); past != pasts.end()) {
        scene.heldPeaks = past->second.peaks[static_cast<std::size_t>(meterSet)].levels();
        scene.loadHistory = past->second.loads.text(LoadHistory::capacity / 2, unicode);
    }
    return pictureOf(scene, size);
}

}  // namespace korva::tool
