#include "engine/endpoint_steps.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "engine/engine_config_document.h"
#include "params/effect_keys.h"
#include "params/property_reader.h"
#include "platform/property_key.h"
#include "platform/published/results.h"

namespace korva::engine {

using framework::Held;
using framework::Ref;
using params::ChunkReader;
using params::ParameterSet;
using published::IAudioSystemEffectsPropertyStore;

namespace {

constexpr std::string_view guidForm = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";

bool fits(char character, char form) noexcept {
    const bool isHexadecimal = (character >= '0' && character <= '9') ||
                               (character >= 'a' && character <= 'f') ||
                               (character >= 'A' && character <= 'F');
    return form == 'x' ? isHexadecimal : character == form;
}

bool isGuidText(std::string_view text) noexcept {
    return text.size() == guidForm.size() && std::ranges::equal(text, guidForm, fits);
}

bool isSet(const GUID& guid) noexcept {
    return !(guid == GUID{});
}

/// What `open(accessMode, out)` gives, asked for both accesses in turn.
template <class Open>
PropertyStore openStore(const Open& open) {
    for (const DWORD accessMode : {published::accessReadWrite, published::accessRead}) {
        IPropertyStore* store = nullptr;
        if (published::succeeded(open(accessMode, &store))) {
            return PropertyStore::adopt(store);
        }
    }
    return nullptr;
}

using OpenSet = HRESULT (STDMETHODCALLTYPE IAudioSystemEffectsPropertyStore::*)(DWORD, IPropertyStore**);

PropertyStore openSet(const EffectsStore& stores, OpenSet method) {
    return stores ? openStore([&](DWORD accessMode, IPropertyStore** store) {
        return ((*stores).*method)(accessMode, store);
    })
                  : nullptr;
}

std::uint32_t numberAt(const PropertyStore& store, const GUID& fxId, DWORD pid) {
    std::uint32_t number = 0;
    if (store && isSet(fxId)) {
        params::ReadU32(store.get(), {fxId, pid}, number);
    }
    return number;
}

}  // namespace

std::string endpointIdOf(const platform::WideString& identifier, bool isAlive) {
    return isAlive ? platform::toUtf8(identifier) : std::string();
}

std::string guidTextIn(std::string_view endpointId) {
    for (std::size_t begin = endpointId.find('{'); begin != std::string_view::npos;
         begin = endpointId.find('{', begin + 1)) {
        const std::string_view candidate = endpointId.substr(begin, guidForm.size());
        if (isGuidText(candidate)) {
            return std::string(candidate);
        }
    }
    return {};
}

platform::WideString identifierOf(IMMDevice* device) {
    LPWSTR text = nullptr;
    if (device == nullptr || published::failed(device->GetId(&text)) || text == nullptr) {
        return {};
    }
    platform::WideString identifier = text;
    CoTaskMemFree(text);
    return identifier;
}

Ref<IMMDevice> deviceOf(const Ref<IMMDeviceEnumerator>& devices, const std::string& endpointId) {
    IMMDevice* device = nullptr;
    if (!devices || endpointId.empty() ||
        published::failed(devices->GetDevice(platform::toWide(endpointId).c_str(), &device))) {
        return nullptr;
    }
    return Ref<IMMDevice>::adopt(device);
}

Ref<IAudioEndpointVolume> volumeOf(const Ref<IMMDevice>& device) {
    DWORD state = 0;
    if (!device || published::failed(device->GetState(&state)) || state != published::deviceStateActive) {
        return nullptr;
    }
    void* volume = nullptr;
    if (published::failed(device->Activate(published::iidOf<IAudioEndpointVolume>, published::classContextAll,
                                           nullptr, &volume))) {
        return nullptr;
    }
    return Ref<IAudioEndpointVolume>::adopt(static_cast<IAudioEndpointVolume*>(volume));
}

PropertyStore propertiesOf(const Ref<IMMDevice>& device) {
    return device ? openStore([&](DWORD accessMode, IPropertyStore** store) {
        return device->OpenPropertyStore(accessMode, store);
    })
                  : nullptr;
}

PropertyStore defaultStoreOf(const EffectsStore& stores) {
    return openSet(stores, &IAudioSystemEffectsPropertyStore::OpenDefaultPropertyStore);
}

PropertyStore userStoreOf(const EffectsStore& stores) {
    return openSet(stores, &IAudioSystemEffectsPropertyStore::OpenUserPropertyStore);
}

PropertyStore volatileStoreOf(const EffectsStore& stores) {
    return openSet(stores, &IAudioSystemEffectsPropertyStore::OpenVolatilePropertyStore);
}

GUID guidAt(const PropertyStore& store, REFPROPERTYKEY key) {
    std::string text;
    if (!store || !isSet(key.fmtid) || params::ReadText(store.get(), key, text) != 0) {
        return {};
    }
    return platform::GuidFromText(text);
}

std::string textOf(const GUID& guid) {
    return isSet(guid) ? platform::guidText(guid) : std::string();
}

platform::WideString wideTextOf(const GUID& guid) {
    return platform::toWide(textOf(guid));
}

std::uint32_t presetVersionIn(const PropertyStore& store, const GUID& fxId) {
    return numberAt(store, fxId, params::effect_property::presetVersion);
}

std::uint32_t modeFlagsIn(const PropertyStore& store, const GUID& fxId) {
    return modeFlagsOfStore(numberAt(store, fxId, params::effect_property::modeFlags));
}

GUID engineIdIn(const PropertyStore& store, const GUID& fxId) {
    return isSet(fxId) ? guidAt(store, {fxId, params::effect_property::engineId}) : GUID{};
}

std::shared_ptr<const ParameterSet> parametersOf(const GUID& engineId) {
    return isSet(engineId) ? params::BuildParameterSet(engineId) : nullptr;
}

std::shared_ptr<const ChunkReaders> readersOf(const PropertyStore& store, const GUID& fxId,
                                              const std::shared_ptr<const ParameterSet>& parameters) {
    if (!store || !isSet(fxId) || !parameters) {
        return nullptr;
    }
    auto readers = std::make_shared<ChunkReaders>();
    for (std::size_t k = 0; k < parameters->chunks().size(); ++k) {
        readers->push_back(Held<ChunkReader>::first(
            framework::create<ChunkReader>(params::shareChunk(parameters, k), fxId)));
        readers->back()->Read(store.get());
    }
    return readers;
}

std::shared_ptr<const std::vector<std::string>> clientListIn(const PropertyStore& store) {
    auto list = std::make_shared<std::vector<std::string>>();
    if (!store || params::ReadTexts(store.get(), params::clientListKey, *list) != 0) {
        return nullptr;
    }
    return list;
}

bool hasEntries(const std::shared_ptr<const std::vector<std::string>>& list) {
    return list != nullptr && !list->empty();
}

}  // namespace korva::engine
