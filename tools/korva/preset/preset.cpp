#include "korva/preset/preset.h"

namespace korva::tool {

const params::ParamDescriptorList* findModule(const params::ParamLayout& layout, std::int32_t module) {
    if (module == -1) {
        return &params::BaseList();
    }
    const auto index = static_cast<std::uint32_t>(module);
    return index < layout.ModuleCount() ? &layout.Module(index).descriptors : nullptr;
}

const params::ParamDescriptor* findParameter(const params::ParamLayout& layout, ParameterPlace place) {
    const params::ParamDescriptorList* const list = findModule(layout, place.module);
    for (std::uint32_t i = 0; list != nullptr && i < list->Count(); ++i) {
        if (list->At(i).paramId == place.id) {
            return &list->At(i);
        }
    }
    return nullptr;
}

}  // namespace korva::tool
