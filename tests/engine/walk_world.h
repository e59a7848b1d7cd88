// A core with several endpoints, another process that writes their properties, modules, and sound.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/engine/module_witness.h"
#include "tests/engine/walk_audio.h"
#include "tests/engine/walk_model.h"
#include "tests/engine/walk_stores.h"
#include "tests/support/conversation.h"
#include "tests/support/effect_rig.h"
#include "tests/support/user_set_alone.h"

namespace korva::test {

/// All that a walk works on, and the comparison with its model. The model's world is to be kept the same.
class WalkWorld {
public:
    WalkWorld();
    /// Closes the core, and checks that all has gone.
    ~WalkWorld();
    WalkWorld(const WalkWorld&) = delete;
    WalkWorld& operator=(const WalkWorld&) = delete;

    /// Their devices are known to the system.
    [[nodiscard]] const std::vector<std::string>& endpoints() const noexcept { return ids; }
    /// Tells that identifier, none if it is empty; whether the system knows it or not.
    [[nodiscard]] framework::Ref<FakeDevice> device(const std::string& id);

    void setDevice(const std::string& id, const ModelDevice& state);

    // Done by the other process; the registry's result.
    int makeSet(const std::string& id, std::string_view set);
    int removeSet(const std::string& id, std::string_view set);
    int write(const std::string& id, std::string_view set, const std::string& name,
              const platform::RegistryValue& value);
    int remove(const std::string& id, std::string_view set, const std::string& name);

    /// Only for a module that isn't loaded.
    void putModule(const std::string& name, ModuleFile file);
    void setAnswers(const ModuleAnswers& answers);

    /// What differs from the model, a line each; empty for nothing.
    [[nodiscard]] std::string differences(const WalkModel& model);
    /// The same of what only one buffer after the other can tell.
    [[nodiscard]] std::string soundDifferences(const WalkModel& model);

    ModuleWitness witness;
    EffectRig rig;
    framework::Ref<WalkStore> replacement;
    framework::Ref<UserSetAlone> replacements;
    std::unique_ptr<WalkAudio> audio;
    /// As of the last look.
    std::uint32_t starts = 0;
    int creates = 0;
    int clears = 0;

private:
    class Comparison;

    int ask(const std::vector<std::string>& parts);
    void compareValues(Comparison& found, const WalkModel& model);
    void compareEngine(Comparison& found, const WalkModel& model);
    void compareStream(Comparison& found, const WalkModel& model);
    void compareInstance(Comparison& found, const WalkModel& model);
    void compareModules(Comparison& found, const WalkModel& model);

    std::vector<std::string> ids;
    std::map<std::string, framework::Ref<FakeDevice>> devicesById;
    std::map<std::string, framework::Ref<FakeVolume>> volumesById;
    Conversation scribe;  // begins when the registry is the test's own
};

}  // namespace korva::test
