#include "korva/module/export_costs.h"

#include <cstddef>

namespace korva::tool {
namespace {

using engine::dspModuleExports;

constexpr std::array<const char*, dspModuleExports.size()> costs = {
    "nothing of the module is used",
    "its instances are never freed",
    "every input format is taken as it is",
    "every output format is taken as it is",
    "nothing is lost: it isn't called so far",
    "it never hears of a stream's format or start",
    "it never hears that a stream has ended",
    "nothing is lost: it isn't called so far",
    "no setting reaches it",
    "tools see neither its version nor meters nor counters",
    "what it keeps of one stream's sound is heard in the next",
    "it never hears of clients",
    "no sound reaches it",
    "nothing is lost: it isn't called so far",
};

constexpr auto exports = [] {
    std::array<ModuleExport, dspModuleExports.size()> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = {dspModuleExports[i], costs[i]};
    }
    return all;
}();

}  // namespace

const std::array<ModuleExport, dspModuleExports.size()>& moduleExports() noexcept {
    return exports;
}

}  // namespace korva::tool
