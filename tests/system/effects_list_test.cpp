// What an object says of its effects, and the event that it keeps for them.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tests/system/class_test.h"
#include "tests/system/support/init_records.h"
#include "tests/system/support/open_handles.h"
#include "tests/system/support/own_devices.h"
#include "tests/system/support/own_event.h"

namespace korva::test {
namespace {

constexpr GUID effectWith(std::uint32_t last) {
    return {0x6F64AD00 + last, 0x8211, 0x11E2, {0x8C, 0x70, 0x2C, 0x27, 0xD7, 0xF0, 0x01, 0xFA}};
}

std::vector<GUID> effectsOf(const ClassFacts& facts) {
    if (facts.clsid == streamClass.clsid) {
        return {effectWith(0xC8), effectWith(0xC6)};
    }
    if (facts.clsid == modeClass.clsid) {
        return {effectWith(0xC0), effectWith(0xC3), effectWith(0xC4), effectWith(0xC5),
                effectWith(0xC6), effectWith(0xCA), effectWith(0xCE)};
    }
    return {effectWith(0xCC), effectWith(0xCD)};
}

class EffectsList : public ClassTest {
protected:
    void initialize(const GUID& mode) {
        OwnPropertyStore endpointProperties;
        OwnPropertyStore effectsProperties;
        auto record = secondRecord(&endpointProperties, &effectsProperties, nullptr, mode);
        EXPECT_EQ(test::initialize(*object.apo, record), result::ok);
    }
    [[nodiscard]] std::vector<GUID> list(HANDLE event = nullptr) {
        auto* ids = reinterpret_cast<LPGUID>(this);
        UINT count = 99;
        EXPECT_EQ(object.effects->GetEffectsList(&ids, &count, event), result::ok);
        std::vector<GUID> effects;
        if (count == 0) {
            EXPECT_EQ(ids, nullptr);
        } else {
            effects.assign(ids, ids + count);
        }
        CoTaskMemFree(ids);
        return effects;
    }
    /// With a handle that is none: the outputs stay as they were.
    void failToList() {
        auto* ids = reinterpret_cast<LPGUID>(this);
        UINT count = 99;
        EXPECT_EQ(object.effects->GetEffectsList(&ids, &count, closedHandle()), result::badHandle);
        EXPECT_EQ(static_cast<void*>(ids), static_cast<void*>(this));
        EXPECT_EQ(count, 99U);
    }

    HostedObject object{library, GetParam()};
};

TEST_P(EffectsList, IsTheClasssOwn) {
    EXPECT_EQ(list(), effectsOf(GetParam())) << "before any initialisation";
    for (const GUID& mode : mode::all) {
        initialize(mode);
        const bool isEmpty = mode == mode::raw && !(GetParam().clsid == endpointClass.clsid);
        EXPECT_EQ(list(), isEmpty ? std::vector<GUID>{} : effectsOf(GetParam()));
    }
}

TEST_P(EffectsList, IsTheSameInAStream) {
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    EXPECT_EQ(list(), effectsOf(GetParam()));
}

TEST_P(EffectsList, TakesNoNullForAPlace) {
    const std::size_t before = openHandles();
    const OwnEvent event;
    LPGUID ids = nullptr;
    UINT count = 99;
    EXPECT_EQ(object.effects->GetEffectsList(nullptr, &count, event.handle()), result::nullPointer);
    EXPECT_EQ(object.effects->GetEffectsList(&ids, nullptr, event.handle()), result::nullPointer);
    EXPECT_EQ(object.effects->GetEffectsList(nullptr, nullptr, closedHandle()), result::nullPointer);
    EXPECT_EQ(count, 99U);
    EXPECT_EQ(openHandles(), before + 1) << "the event is not kept";
}

TEST_P(EffectsList, KeepsOneHandleToTheEventUntilTheObjectGoes) {
    static_cast<void>(list());
    const OwnEvent event;
    const OwnEvent other;
    const std::size_t before = openHandles();
    EXPECT_EQ(list(event.handle()), effectsOf(GetParam()));
    EXPECT_EQ(openHandles(), before + 1);
    EXPECT_EQ(list(event.handle()), effectsOf(GetParam()));
    EXPECT_EQ(list(other.handle()), effectsOf(GetParam()));
    EXPECT_EQ(openHandles(), before + 1) << "the last one takes the place";
    EXPECT_EQ(list(nullptr), effectsOf(GetParam()));
    EXPECT_EQ(openHandles(), before + 1) << "none leaves it";
    ASSERT_EQ(object.effects->GetEffectsList(nullptr, nullptr, nullptr), result::nullPointer);
    EXPECT_EQ(openHandles(), before + 1);
}

TEST_P(EffectsList, GivesItsEventBackWithTheObject) {
    const OwnEvent event;
    { HostedObject settled(library, GetParam()); }
    const std::size_t before = openHandles();
    {
        HostedObject another(library, GetParam());
        LPGUID ids = nullptr;
        UINT count = 0;
        EXPECT_EQ(another.effects->GetEffectsList(&ids, &count, event.handle()), result::ok);
        CoTaskMemFree(ids);
    }
    EXPECT_EQ(openHandles(), before);
}

TEST_P(EffectsList, WithABadEventFailsAndDropsTheFormerOne) {
    static_cast<void>(list());
    const OwnEvent event;
    const std::size_t before = openHandles();
    failToList();
    EXPECT_EQ(openHandles(), before);
    EXPECT_EQ(list(event.handle()), effectsOf(GetParam()));
    failToList();
    EXPECT_EQ(openHandles(), before);
    EXPECT_EQ(list(event.handle()), effectsOf(GetParam())) << "usable afterwards";
    EXPECT_EQ(openHandles(), before + 1);
}

TEST_P(EffectsList, OfARawStreamKeepsTheEventToo) {
    initialize(mode::raw);
    static_cast<void>(list());
    const OwnEvent event;
    const std::size_t before = openHandles();
    static_cast<void>(list(event.handle()));
    EXPECT_EQ(openHandles(), before + 1);
    failToList();
    EXPECT_EQ(openHandles(), before);
}

TEST_P(EffectsList, OfWhatCanBeControlledIsEmpty) {
    auto* effects = reinterpret_cast<published::AUDIO_SYSTEMEFFECT*>(this);
    UINT count = 99;
    EXPECT_EQ(object.effects->GetControllableSystemEffectsList(&effects, &count, nullptr), result::ok);
    EXPECT_EQ(effects, nullptr);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(object.effects->GetControllableSystemEffectsList(nullptr, nullptr, nullptr), result::ok);
    count = 99;
    EXPECT_EQ(object.effects->GetControllableSystemEffectsList(nullptr, &count, closedHandle()), result::ok);
    EXPECT_EQ(count, 0U);
    effects = reinterpret_cast<published::AUDIO_SYSTEMEFFECT*>(this);
    EXPECT_EQ(object.effects->GetControllableSystemEffectsList(&effects, nullptr, nullptr), result::ok);
    EXPECT_EQ(effects, nullptr);
}

TEST_P(EffectsList, StaysAsItIsWhateverEffectIsTurnedOff) {
    for (const std::uint32_t state : {0U, 1U, 2U, 0xFFFFFFFFU}) {
        for (const GUID& id : {effectsOf(GetParam()).front(), iid::nobodys, GUID{}}) {
            EXPECT_EQ(object.effects->SetAudioSystemEffectState(
                          id, static_cast<published::AUDIO_SYSTEMEFFECT_STATE>(state)),
                      result::ok);
        }
    }
    EXPECT_EQ(list(), effectsOf(GetParam()));
}

KORVA_OF_EACH_CLASS(EffectsList);

}  // namespace
}  // namespace korva::test
