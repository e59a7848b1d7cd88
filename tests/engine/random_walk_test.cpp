// A core in a world that changes at random, beside a model of what it must come to. Another process writes
// the properties, sound runs all the time, and after each operation the core is compared with the model.
//
// KORVA_WALK_SEED repeats the operations of a run (not how the threads interleave), KORVA_WALK_OPERATIONS
// sets how many there are in all.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "params/effect_keys.h"
#include "params/effects_store_provider.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "tests/engine/walk_model.h"
#include "tests/engine/walk_values.h"
#include "tests/engine/walk_world.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::engine {
namespace {

using framework::Ref;
using platform::RegistryValue;
using test::ModuleFile;
using test::WalkValues;

namespace set_name = params::property_set;

/// The walk is cut into parts that can be taken side by side, and each part into lives of a core.
constexpr std::size_t partCount = 4;
constexpr std::size_t operationsOfLife = 500;
constexpr PROPERTYKEY selection = params::selectionKey(params::EffectKind::mode);
constexpr PROPERTYKEY disableKey = {
    {0x1DA5D803, 0xD492, 0x4EDD, {0x8C, 0x23, 0xE0, 0xC0, 0xFF, 0xEE, 0x7F, 0x0E}}, 5};

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::stoull(text);
}

/// One life of a core: operations at random, each done to the world and told to the model.
class Walk {
public:
    Walk(std::uint64_t seed, std::uint64_t part, std::uint64_t life)
        : random(mixed(seed, part, life)), values(random) {
        for (const std::string& id : world.endpoints()) {
            model.devices[id] = {};
            model.userSets[id].exists = true;
        }
        for (const char* const name : moduleNames) {
            model.files[name] = ModuleFile::module;
        }
    }

    void take(std::size_t count) {
        install(world.endpoints()[0]);
        for (std::size_t step = 0; step < count && !testing::Test::HasFailure(); ++step) {
            takeStep();
            compare();
        }
    }

private:
    static constexpr std::array<const char*, 3> moduleNames = {"TANMER64", "DRIVOL64", "PELLUX64"};

    static std::mt19937_64 mixed(std::uint64_t seed, std::uint64_t part, std::uint64_t life) {
        std::seed_seq sequence{seed & 0xFFFFFFFF, seed >> 32, part, life};
        return std::mt19937_64(sequence);
    }

    // The words of what was done, for whoever has to follow a failure.
    void note(const std::string& what) {
        history.push_back(what);
        if (history.size() > 25) {
            history.pop_front();
        }
    }
    [[nodiscard]] std::string told() const {
        std::string text;
        for (const std::string& line : history) {
            text += line + '\n';
        }
        return text;
    }

    void takeStep() {
        using Step = void (Walk::*)();
        static constexpr std::array<std::pair<std::uint32_t, Step>, 18> steps{{
            {12, &Walk::changeEndpoint},
            {14, &Walk::installSomewhere},
            {8, &Walk::writeSelection},
            {20, &Walk::writeChunk},
            {5, &Walk::writeClients},
            {5, &Walk::writeIdentity},
            {3, &Walk::removeOrMakeSet},
            {9, &Walk::lockOrUnlock},
            {3, &Walk::notifyVolume},
            {3, &Walk::notifyDisabled},
            {5, &Walk::notifyProperty},
            {4, &Walk::changeDevice},
            {4, &Walk::changeAllowed},
            {2, &Walk::changeReplacement},
            {3, &Walk::writeReplacement},
            {5, &Walk::changeModule},
            {5, &Walk::changeAnswers},
            {2, &Walk::writeElsewhere},
        }};
        std::uint32_t total = 0;
        for (const auto& [weight, step] : steps) {
            total += weight;
        }
        std::uint32_t chosen = values.below(total);
        for (const auto& [weight, step] : steps) {
            if (chosen < weight) {
                (this->*step)();
                return;
            }
            chosen -= weight;
        }
    }

    // Comparing ------------------------------------------------------------------------------------------

    void compare() {
        std::string found;
        const bool isSame = test::waitUntil([&] {
            world.rig.settle();
            found = world.differences(model);
            return found.empty();
        });
        found += world.soundDifferences(model);
        compareCounts();
        EXPECT_TRUE(isSame && found.empty()) << found << "after:\n" << told();
        model.forgetCounts();
    }

    void compareCounts() {
        world.rig.on([&] {
            const std::uint32_t starts = world.rig.core().presetLoadCount.value();
            const auto newStarts = static_cast<int>(starts - std::exchange(world.starts, starts));
            const int newCreates =
                world.witness.creates - std::exchange(world.creates, world.witness.creates);
            const int newClears = world.witness.clears - std::exchange(world.clears, world.witness.clears);
            EXPECT_LE(newCreates, model.createsAtMost) << told();
            EXPECT_EQ(newClears, model.clears) << told();
            EXPECT_GE(newStarts, model.startsAtLeast) << told();
            EXPECT_TRUE(newStarts == 0 || model.startsAtLeast > 0) << told();
        });
    }

    // What the other process writes ----------------------------------------------------------------------

    [[nodiscard]] std::string anyEndpoint() {
        return !model.endpoint.empty() && model.devices.contains(model.endpoint) && !values.once(4)
                   ? model.endpoint
                   : world.endpoints()[values.below(world.endpoints().size())];
    }
    [[nodiscard]] GUID anyEffect() {
        return model.fxId == GUID{} || values.once(3)
                   ? test::effectGuid(static_cast<std::uint8_t>(1 + values.below(3)))
                   : model.fxId;
    }

    void write(const std::string& id, REFPROPERTYKEY key, const RegistryValue& value) {
        const std::string name = platform::KeyToText(key);
        note("write " + name + " type " + std::to_string(value.type) + " of " +
             std::to_string(value.data.size()) + " bytes to " + id);
        test::PropertySet& set = model.userSets.at(id);
        EXPECT_EQ(world.write(id, set_name::user, name, value), set.exists ? 0 : 2);
        if (set.exists) {
            set.values[name] = value;
        }
    }

    void remove(const std::string& id, REFPROPERTYKEY key) {
        const std::string name = platform::KeyToText(key);
        note("delete " + name + " of " + id);
        test::PropertySet& set = model.userSets.at(id);
        const bool isThere = set.exists && set.values.erase(name) != 0;
        EXPECT_EQ(world.remove(id, set_name::user, name), isThere ? 0 : 2);
    }

    [[nodiscard]] bool isHeard(const std::string& id) const {
        return id == model.endpoint && model.hearsOfWrites();
    }

    /// Waits until the core has heard of all that was written to the endpoint so far: a new list of clients
    /// is the last to be written, and has come.
    void settle(const std::string& id) {
        if (!isHeard(id)) {
            return;
        }
        const std::string mark = "client " + std::to_string(++markCount);
        write(id, params::clientListKey, WalkValues::list(std::vector{mark}));
        EXPECT_TRUE(waitForClients([&](const auto* list) {
            return list != nullptr && !list->empty() && list->front() == mark;
        })) << told();
        model.reportSet();
    }

    template <class Fits>
    [[nodiscard]] bool waitForClients(const Fits& fits) {
        return test::waitUntil([&] { return fits(world.rig.core().clientList.read().get()); });
    }

    /// All that selects an engine, and what names it last.
    void install(const std::string& id) {
        const GUID effect = anyEffect();
        write(id, {effect, 0},
              values.once(6) ? values.mostlyNumber(4) : WalkValues::number(1 + values.below(3)));
        write(id, {effect, 1}, values.mostlyNumber(4));
        write(id, {effect, 2}, values.mostlyEngine());
        settle(id);
        write(id, selection, WalkValues::text(platform::guidText(effect)));
        settle(id);
    }

    void installSomewhere() { install(anyEndpoint()); }

    /// One of the numbers alone: the core takes it the next time that it reads them all.
    void writeSelection() {
        const std::string id = anyEndpoint();
        const PROPERTYKEY key{anyEffect(), values.below(3)};
        if (values.once(8)) {
            remove(id, key);
        } else {
            write(id, key, key.pid == 2 ? values.mostlyEngine() : values.mostlyNumber(4));
        }
        settle(id);
    }

    void writeChunk() {
        const std::string id = anyEndpoint();
        const GUID effect = anyEffect();
        const GUID engine = model.engineId == GUID{} || values.once(8) ? values.engine() : model.engineId;
        const auto index = values.below(engine == test::firstEngine ? 38 : 12);
        const PROPERTYKEY key{effect, 3000 + index};
        const std::vector<test::ModelParameter>* const chunk = model.chunkOf(engine, index);
        if (values.once(8)) {
            remove(id, key);
        } else if (values.once(8) || chunk == nullptr) {
            write(id, key, values.mostlyNumber(100));
        } else {
            write(id, key, values.blob(*chunk));
        }
        settle(id);
    }

    void writeClients() {
        const std::string id = anyEndpoint();
        const PROPERTYKEY key = params::clientListKey;
        const std::string mark = "client " + std::to_string(++markCount);
        const bool heard = isHeard(id);
        using List = const std::vector<std::string>*;
        const auto writeAndWait = [&](const RegistryValue& value, const auto& fits) {
            write(id, key, value);
            EXPECT_TRUE(!heard || waitForClients(fits)) << told();
        };
        switch (values.below(6)) {
            case 0:
                // Word of an earlier change may come late, and find the list gone.
                remove(id, key);
                settle(id);
                return;
            case 1:
                writeAndWait({platform::registry_type::multiString, {}},
                             [](List list) { return list != nullptr && list->empty(); });
                break;
            case 2:
                writeAndWait(WalkValues::number(8), [](List list) { return list == nullptr; });
                break;
            case 3:
                writeAndWait({platform::registry_type::multiString, values.someBytes(3)},
                             [](List list) { return list == nullptr; });
                break;
            case 4:
                writeAndWait(WalkValues::list(std::vector<std::string>{""}), [](List list) {
                    return list != nullptr && list->size() == 1 && list->front().empty();
                });
                break;
            default:
                writeAndWait(WalkValues::list(std::vector<std::string>{mark, "another"}), [&](List list) {
                    return list != nullptr && list->size() == 2 && list->front() == mark;
                });
                break;
        }
        if (heard) {
            model.reportSet();
        }
    }

    /// What names the effect, in another spelling, or wrong.
    void writeIdentity() {
        const std::string id = anyEndpoint();
        std::string text = platform::guidText(anyEffect());
        switch (values.below(6)) {
            case 0:
                remove(id, selection);
                break;
            case 1:
                write(id, selection, WalkValues::number(7));
                break;
            case 2:
                write(id, selection, WalkValues::text(values.once(2) ? "" : "none of these"));
                break;
            case 3:
                write(id, selection, WalkValues::text(text.substr(1, text.size() - 2)));
                break;
            case 4:
                text.replace(text.find("5ab1"), 4, "5AB1");
                write(id, selection, WalkValues::text(text));
                break;
            default:
                write(id, selection, WalkValues::text(text));
                break;
        }
        settle(id);
    }

    // A list of clients is read once more by whoever has the old key open: it finds none.
    void removeOrMakeSet() {
        const std::string id = anyEndpoint();
        test::PropertySet& set = model.userSets.at(id);
        if (set.exists) {
            note("remove the set of " + id);
            EXPECT_EQ(world.removeSet(id, set_name::user), 0);
            set = {false, set.generation, {}};
            notify(id, params::clientListKey);
        } else {
            note("make the set of " + id);
            EXPECT_EQ(world.makeSet(id, set_name::user), 0);
            set = {true, set.generation + 1, {}};
            install(id);
        }
    }

    /// Where nothing is read, but where all is watched.
    void writeElsewhere() {
        const std::string id = anyEndpoint();
        const auto set = values.once(2) ? set_name::standard : set_name::temporary;
        note("write to " + std::string(set) + " of " + id);
        EXPECT_EQ(world.makeSet(id, set), 0);
        const PROPERTYKEY key =
            values.once(3) ? params::hardwarePulseKey : PROPERTYKEY{anyEffect(), 3000 + values.below(4)};
        EXPECT_EQ(world.write(id, set, platform::KeyToText(key), values.mostlyNumber(9)), 0);
    }

    // What is done to the core ---------------------------------------------------------------------------

    void changeEndpoint() {
        std::string id = world.endpoints()[values.below(world.endpoints().size())];
        switch (values.below(10)) {
            case 0:
                id.clear();
                break;
            case 1:
                id[id.size() - 2] = 'g';
                id += "{01234567-89ab-cdef-0123-456789abcdef}";
                break;
            case 2:
                id.replace(id.find("ffff"), 4, "FFFF");
                break;
            default:
                break;
        }
        note("endpoint " + id);
        world.rig.begin(id);
        model.setEndpoint(id);
    }

    [[nodiscard]] test::StreamFormat anyFormat() {
        static constexpr std::array<std::uint32_t, 5> counts = {1, 2, 2, 6, 8};
        static constexpr std::array<std::uint32_t, 8> rates = {48000, 48000, 48000,  44100,
                                                               44100, 96000, 192000, 0};
        return {.channels = counts[values.below(counts.size())], .rate = rates[values.below(rates.size())]};
    }

    // Audio engines run no sound while they lock; a lock of what is locked is none.
    void lockOrUnlock() {
        if (values.once(3)) {
            note("unlock");
            world.rig.unlock();
            model.unlock();
            return;
        }
        const test::StreamFormat in = anyFormat();
        test::StreamFormat out = values.once(2) ? in : anyFormat();
        out.rate = in.rate;
        note("lock " + std::to_string(in.channels) + " to " + std::to_string(out.channels) + " at " +
             std::to_string(in.rate));
        const bool isLocked = model.isLocked;
        model.lock(in, out);
        if (isLocked) {
            world.rig.lock(in, out);
        } else {
            world.audio->between(in.channels, out.channels, [&] { world.rig.lock(in, out); });
        }
    }

    void changeAllowed() {
        const bool allowed = values.once(2) || values.once(2);
        note(allowed ? "allow" : "forbid");
        world.rig.core().engineAllowed.set(allowed);
        model.setAllowed(allowed);
    }

    void changeReplacement() {
        const bool replaced = values.once(3);
        note(replaced ? "replace the store" : "use the own store");
        world.rig.core().overrideStore.set(replaced ? EffectsStore(world.replacements) : nullptr);
        model.setReplaced(replaced);
    }

    /// The store of someone else's changes, and the system tells.
    void writeReplacement() {
        static constexpr std::array<DWORD, 5> pids = {0, 1, 2, 3000, 3001};
        const GUID effect = anyEffect();
        PROPERTYKEY key{effect, pids[values.below(pids.size())]};
        RegistryValue value = key.pid == 2 ? values.mostlyEngine() : values.mostlyNumber(4);
        if (values.once(3)) {
            key = selection;
            value = WalkValues::text(platform::guidText(effect));
        }
        const std::vector<test::ModelParameter>* const chunk =
            key.pid < 3000 ? nullptr : model.chunkOf(model.engineId, key.pid - 3000);
        if (chunk != nullptr) {
            value = values.blob(*chunk);
        }
        const std::string name = platform::KeyToText(key);
        note("write " + name + " to the other store");
        model.replacement[name] = value;
        world.rig.on([&] { world.replacement->values[name] = value; });
        notify(model.endpoint, key);
    }

    // What the system tells ------------------------------------------------------------------------------

    /// The own endpoint's more often than another's; in capitals it is the own one as well.
    [[nodiscard]] std::string anyIdentifier() {
        std::string id = values.once(4) ? world.endpoints()[values.below(3)] : model.endpoint;
        if (values.once(4) && id.find("ffff") != std::string::npos) {
            id.replace(id.find("ffff"), 4, "FFFF");
        }
        return id;
    }

    void tell(const published::APO_NOTIFICATION& notification) {
        world.rig.on([&] { world.rig.core().onApoNotification(notification); });
    }

    void notify(const std::string& id, REFPROPERTYKEY key, const GUID& context = params::storeContext) {
        note("notify of " + platform::KeyToText(key) + " at " + id);
        const Ref<test::FakeDevice> device = world.device(id);
        published::APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE;
        notification.audioSystemEffectsPropertyChange = {
            device.get(), context, published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER, nullptr, key};
        tell(notification);
        if (context == params::storeContext) {
            model.tellProperty(id, key);
        }
    }

    void notifyProperty() {
        const GUID effect = anyEffect();
        const std::array<PROPERTYKEY, 6> keys = {{{effect, values.below(4)},
                                                  {effect, 3000 + values.below(40)},
                                                  selection,
                                                  params::hardwarePulseKey,
                                                  params::clientListKey,
                                                  {test::unknownEngine, 3000}}};
        notify(anyIdentifier(), keys[values.below(keys.size())],
               values.once(6) ? test::unknownEngine : params::storeContext);
    }

    [[nodiscard]] float anyScalar() {
        static constexpr std::array<float, 6> scalars = {0.0f, 1.0f, 0.5f, 0.125f, 1e-9f, -1.0f};
        return scalars[values.below(scalars.size())];
    }

    void notifyVolume() {
        const std::string id = anyIdentifier();
        const Ref<test::FakeDevice> device = world.device(id);
        AUDIO_VOLUME_NOTIFICATION_DATA volume{};
        volume.fMasterVolume = anyScalar();
        note("volume " + std::to_string(volume.fMasterVolume) + " of " + id);
        published::APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
        notification.audioEndpointVolumeChange = {device.get(), &volume};
        tell(notification);
        model.tellVolume(id, volume.fMasterVolume);
    }

    void notifyDisabled() {
        const std::string id = anyIdentifier();
        const Ref<test::FakeDevice> device = world.device(id);
        const auto store = framework::create<test::WalkStore>();
        const std::uint32_t number = values.below(3);
        const bool isNumber = !values.once(4);
        store->values[platform::KeyToText(disableKey)] =
            isNumber ? WalkValues::number(number) : WalkValues::text("1");
        note("disabled " + std::to_string(number) + " of " + id);
        const PROPERTYKEY key{disableKey.fmtid, values.once(4) ? 6U : 5U};
        published::APO_NOTIFICATION notification{};
        notification.type = published::APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE;
        notification.audioEndpointPropertyChange = {device.get(), store.get(), key};
        tell(notification);
        if (key == disableKey) {
            model.tellDisabled(id, isNumber && number == 1);
        }
    }

    // What is around -------------------------------------------------------------------------------------

    /// What a device will be when it is opened the next time, and how loud it is from now on.
    void changeDevice() {
        const std::string id = world.endpoints()[values.below(3)];
        test::ModelDevice& expected = model.devices.at(id);
        expected = {!values.once(3), !values.once(4), anyScalar(), values.once(4)};
        note("device " + id + (expected.isActive ? " is active" : " is not active"));
        world.setDevice(id, expected);
    }

    // Systems differ in what becomes of a file that is in use, so those stay.
    void changeModule() {
        const std::string name = moduleNames[values.below(moduleNames.size())];
        if (model.isLoaded(name)) {
            return;
        }
        static constexpr std::array<ModuleFile, 6> files = {ModuleFile::missing,       ModuleFile::text,
                                                            ModuleFile::withoutCreate, ModuleFile::module,
                                                            ModuleFile::module,        ModuleFile::module};
        model.files[name] = files[values.below(files.size())];
        note("file " + std::to_string(static_cast<int>(model.files[name])) + " for " + name);
        world.putModule(name, model.files[name]);
    }

    void changeAnswers() {
        model.answers = {values.once(2), values.once(5), values.once(4), 1 + values.below(100)};
        note(std::string("answers: hardware ") + (model.answers.hardware ? "yes" : "no") +
             (model.answers.createsNull ? ", no instance" : "") +
             (model.answers.countsAreWrong ? ", wrong counts" : ""));
        world.setAnswers(model.answers);
    }

    std::mt19937_64 random;
    WalkValues values;
    test::WalkModel model;
    test::WalkWorld world;
    std::deque<std::string> history;
    std::uint64_t markCount = 0;
};

class EffectCoreWalk : public testing::TestWithParam<std::size_t> {};

TEST_P(EffectCoreWalk, WhateverHappensTheCoreComesToWhatItsModelSays) {
    const std::uint64_t seed = numberFrom("KORVA_WALK_SEED", std::random_device()());
    const std::uint64_t operations = numberFrom("KORVA_WALK_OPERATIONS", KORVA_WALK_DEFAULT) / partCount;
    std::cout << "KORVA_WALK_SEED=" << seed << std::endl;
    SCOPED_TRACE("KORVA_WALK_SEED=" + std::to_string(seed));
    const std::size_t threadsBefore = test::threadCountAtRest();
    std::uint64_t done = 0;
    for (std::uint64_t life = 0; done < operations && !HasFailure(); ++life) {
        const std::uint64_t count = std::min<std::uint64_t>(operationsOfLife, operations - done);
        Walk(seed, GetParam(), life).take(count);
        done += count;
    }
    std::cout << done << " operations" << std::endl;
    EXPECT_GT(done, 0U);
    EXPECT_TRUE(test::waitUntil([&] { return test::threadCount() <= threadsBefore; }));
    EXPECT_EQ(framework::liveThreadCount().get(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Parts, EffectCoreWalk, testing::Range<std::size_t>(0, partCount));

}  // namespace
}  // namespace korva::engine
