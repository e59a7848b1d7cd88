#include "korva/module/check/parameters.h"

#include <bit>
#include <cstring>
#include <random>

#include "korva/catalogue/engine_parameters.h"

namespace korva::tool {
namespace {

class Changes {
public:
    explicit Changes(std::uint32_t seed) : generator(seed) {}

    void change(const params::ParamDescriptor& descriptor, std::vector<std::byte>& bytes) {
        std::size_t offset = 0;
        for (std::uint32_t i = 0; i < descriptor.fieldCount; ++i) {
            changeField(descriptor.fields[i].type, bytes.data() + offset);
            offset += descriptor.fields[i].length;
        }
    }

    float number(float from, float to) { return from + (to - from) * fraction(); }

private:
    float fraction() { return static_cast<float>(generator() >> 8) / static_cast<float>(1 << 24); }

    void changeField(params::ParamFieldType type, std::byte* field) {
        if (type == params::ParamFieldType::Bool) {
            *field = std::byte{static_cast<unsigned char>(generator() & 1)};
        } else if (type == params::ParamFieldType::Float32) {
            float value = 0;
            std::memcpy(&value, field, sizeof(value));
            value = value == 0 ? fraction() : value * number(0.5F, 1.5F);
            std::memcpy(field, &value, sizeof(value));
        }
    }

    std::mt19937 generator;
};

SentParameter volume(float decibels) {
    const auto bytes = std::bit_cast<std::array<std::byte, 4>>(decibels);
    return {KORVA_BANK_ENDPOINT, KORVA_PARAMETER_VOLUME_DB, {bytes.begin(), bytes.end()}};
}

}  // namespace

std::vector<SentParameter> parametersOf(const GUID& engine, std::uint32_t seed) {
    const params::ParamLayout* const layout = params::FindLayout(engine);
    if (layout == nullptr) {
        return {};
    }
    Changes changes(seed);
    std::vector<SentParameter> parameters;
    for (const ListedParameter& listed : listEngine(*layout).parameters) {
        std::vector<std::byte> bytes = params::defaultPayload(*listed.descriptor);
        if (bytes.empty()) {
            continue;  // The host sends no such one.
        }
        if (seed != defaultParameters) {
            changes.change(*listed.descriptor, bytes);
        }
        parameters.push_back({listed.module, listed.descriptor->paramId, std::move(bytes)});
    }
    parameters.push_back({KORVA_BANK_ENGINE, KORVA_PARAMETER_EFFECTS_DISABLED, {std::byte{0}}});
    parameters.push_back(volume(seed == defaultParameters ? 0.0F : changes.number(-20.0F, 0.0F)));
    return parameters;
}

void sendParameters(TestedInstance& instance, const std::vector<SentParameter>& parameters) {
    for (const SentParameter& parameter : parameters) {
        instance.setParameter(parameter.bank, parameter.id, parameter.bytes);
    }
}

}  // namespace korva::tool
