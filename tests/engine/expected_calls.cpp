#include "tests/engine/expected_calls.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <tuple>

#include "params/catalogue.h"
#include "tests/support/call_text.h"

namespace korva::test {
namespace {

struct Row {
    std::uint32_t priority;
    int bank;
    int id;
    const params::ParamDescriptor* descriptor;

    bool operator<(const Row& other) const {
        return std::tie(priority, bank, id) < std::tie(other.priority, other.bank, other.id);
    }
};

void addRows(std::vector<Row>& rows, int bank, const params::ParamDescriptorList& list) {
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        rows.push_back({list.At(i).applyPriority, bank, list.At(i).paramId, &list.At(i)});
    }
}

std::vector<Row> rowsOf(const GUID& engineId) {
    std::vector<Row> rows;
    addRows(rows, -1, params::BaseList());
    const params::ParamLayout& layout = *params::FindLayout(engineId);
    for (std::uint32_t module = 0; module < layout.ModuleCount(); ++module) {
        addRows(rows, static_cast<int>(module), layout.Module(module).descriptors);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::string numbered(const std::string& function, int instance, const std::string& arguments = {}) {
    return function + " #" + std::to_string(instance) + arguments;
}

}  // namespace

Lines joined(const std::vector<Lines>& parts) {
    Lines all;
    for (const Lines& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Lines defaultParameters(const GUID& engineId, int instance) {
    Lines lines;
    for (const Row& row : rowsOf(engineId)) {
        if (const auto payload = params::defaultPayload(*row.descriptor); !payload.empty()) {
            lines.push_back(parameterText(instance, row.bank, row.id, payload));
        }
    }
    return lines;
}

Lines startCalls(const ExpectedStart& start) {
    const int instance = start.instance;
    Lines lines = {numbered("Initialize", instance, ' ' + start.formats + ", 0ch 0 0"),
                   numbered("SetGetData", instance, " -1:-32 out 4"),
                   numbered("SetGetData", instance, " -1:-43 out 12"),
                   numbered("SetGetData", instance, " -1:-39 in 00000000")};
    lines = joined({lines, defaultParameters(start.engineId, instance)});
    lines.push_back(numbered("SetParameter", instance, " -1:-18 00"));
    if (start.volumeDb) {
        lines.push_back(parameterText(instance, 4, 24, std::as_bytes(std::span(&*start.volumeDb, 1))));
    }
    return lines;
}

Lines lockCalls(int instance) {
    return {numbered("SetGetData", instance, " -1:-32 out 4"), numbered("Clear", instance, " -1"),
            numbered("SetGetData", instance, " -1:-38 in 00"),
            numbered("SetGetData", instance, " -1:-36 out 32"),
            numbered("SetGetData", instance, " -1:-37 out 32")};
}

}  // namespace korva::test
