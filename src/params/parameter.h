// One parameter of a DSP module: layers of bytes, and what they come to.
#pragma once

#include <cstdint>

#include "framework/active_object.h"
#include "framework/shared_bytes.h"
#include "params/catalogue.h"

namespace korva::params {

/// A numbered block of bytes in five layers. `effective` is the first layer that isn't empty, in the order of
/// the parameter's source policy; the layer that changes counts with what it is about to be.
///
///     policy 0: OverrideTop, OverrideMid, PresetValue, OverrideLow, CatalogueValue
///     policy 1: OverrideTop, OverrideLow, CatalogueValue
///     policy 2: OverrideTop, OverrideMid, PresetValue, CatalogueValue
class Parameter final : public framework::ObjectClass<Parameter, framework::ActiveObject> {
public:
    using Bytes = framework::SharedBytes;

    /// `module` is `baseModuleIndex` for a parameter of the base list. The layers are empty.
    Parameter(std::uint32_t module, const ParamDescriptor& descriptor);

    static void describeMembers(framework::ClassInfo& info);

    const std::uint32_t moduleIndex;
    const std::int32_t paramId;
    const std::uint32_t category;
    const std::uint32_t sourcePolicy;
    const std::uint32_t applyPriority;

    framework::Observable<Bytes> CatalogueValue{*this, framework::tellsOwner};  ///< The default payload.
    framework::Observable<Bytes> OverrideLow{*this, framework::tellsOwner};
    framework::Observable<Bytes> PresetValue{*this, framework::tellsOwner};  ///< The slice of a preset.
    framework::Observable<Bytes> OverrideMid{*this, framework::tellsOwner};
    framework::Observable<Bytes> OverrideTop{*this, framework::tellsOwner};

    framework::Observable<Bytes> effective{*this, framework::tellsOwner};
    framework::Observable<bool> asBool{*this};           ///< `effective` is one byte that isn't zero.
    framework::Observable<std::uint32_t> asUInt{*this};  ///< `effective` if it has 4 bytes, else 0.
    framework::Observable<float> asFloat{*this};         ///< The same.

private:
    void onValueChanging(framework::ObservableBase& value) override;
    void readEffective();
    [[nodiscard]] const Bytes& merged() const noexcept;
};

}  // namespace korva::params
