#include "tests/system/support/hosted_effect.h"

#include <gtest/gtest.h>

#include "platform/property_key.h"
#include "platform/unicode.h"
#include "tests/support/call_text.h"

namespace korva::test {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
namespace registry_type = platform::registry_type;

namespace {

constexpr GUID effectId = {0x5AB10000, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
constexpr DWORD presetVersion = 0;
constexpr DWORD modeFlagsPid = 1;
constexpr DWORD engineIdPid = 2;
constexpr DWORD firstChunk = 3000;

std::string settingsPath(const std::string& endpointId) {
    return "Software\\Veltrane\\APO\\" + endpointId;
}

std::vector<RecordedCall> withoutSound(std::vector<RecordedCall> calls) {
    std::erase_if(calls, [](const RecordedCall& call) { return call.function == "process"; });
    return calls;
}

}  // namespace

HostedEffect::HostedEffect(const std::string& answers) : recording(answers) {
    library.putRecorders();
    EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                  .create(settingsPath(endpoint.id()) + "\\FxProperties\\User", RegistryAccess::readWrite,
                          settings),
              0);
}

HostedEffect::~HostedEffect() {
    settings = {};
    EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine).deleteTree(settingsPath(endpoint.id())), 0);
}

// What names the effect's properties comes last: all of them are there by then.
void HostedEffect::install(const ClassFacts& facts, const char* engineId, std::uint32_t modeFlags) const {
    setNumber({effectId, presetVersion}, 1);
    setNumber({effectId, modeFlagsPid}, modeFlags);
    setText({effectId, engineIdPid}, engineId);
    setText({selectionFormat, facts.fxIdPid}, platform::guidText(effectId));
}

void HostedEffect::writePreset(std::uint32_t k, std::span<const std::byte> blob) const {
    EXPECT_EQ(settings.setValue(platform::KeyToText(presetKey(k)), registry_type::binary, blob), 0);
}

PROPERTYKEY HostedEffect::presetKey(std::uint32_t k) {
    return {effectId, firstChunk + k};
}

HRESULT HostedEffect::initialize(HostedObject& object, const GUID& mode) {
    auto record = secondRecord(&endpointProperties, &effectsProperties, &devices, mode);
    return test::initialize(*object.apo, record);
}

std::vector<std::string> HostedEffect::calls() const {
    return textsOf(withoutSound(recording.calls()));
}

std::vector<std::string> HostedEffect::newCalls() {
    std::vector<std::string> all = calls();
    const std::size_t before = seen;
    seen = all.size();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(before));
    return all;
}

std::size_t HostedEffect::count(std::string_view function) const {
    return callsOf(function, recording.calls()).size();
}

void HostedEffect::setText(REFPROPERTYKEY key, std::string_view text) const {
    platform::WideString wide = platform::toWide(text);
    wide.push_back(0);
    EXPECT_EQ(settings.setValue(platform::KeyToText(key), registry_type::string,
                                std::as_bytes(std::span(wide.data(), wide.size()))),
              0);
}

void HostedEffect::setNumber(REFPROPERTYKEY key, std::uint32_t number) const {
    EXPECT_EQ(settings.setValue(platform::KeyToText(key), registry_type::dword,
                                std::as_bytes(std::span(&number, 1))),
              0);
}

}  // namespace korva::test
