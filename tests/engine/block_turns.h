// Whether sound came to a module in its turn.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include "tests/support/recorded_calls.h"

namespace korva::test {

/// How many blocks an instance got while it wasn't between the end of its Initialize and the beginning of its
/// Uninitialize.
[[nodiscard]] inline int blocksOutOfTurn(const std::vector<RecordedCall>& calls) {
    constexpr std::int64_t notYet = std::numeric_limits<std::int64_t>::max();
    std::map<int, std::vector<std::pair<std::int64_t, std::int64_t>>> turns;
    for (const RecordedCall& call : calls) {
        if (call.function == "Initialize") {
            turns[call.instance].emplace_back(call.endNs, notYet);
        } else if (call.function == "Uninitialize") {
            turns[call.instance].back().second = call.beginNs;
        }
    }
    return static_cast<int>(std::ranges::count_if(calls, [&](const RecordedCall& call) {
        return call.function == "process" &&
               std::ranges::none_of(turns[call.instance], [&](const auto& turn) {
                   return turn.first <= call.beginNs && call.endNs <= turn.second;
               });
    }));
}

}  // namespace korva::test
