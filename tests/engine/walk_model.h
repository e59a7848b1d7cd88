// What an effect core must come to, whatever happens around it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "params/parameter_set.h"
#include "platform/published/property_types.h"
#include "platform/registry.h"
#include "tests/support/effect_rig.h"

namespace korva::test {

using Bytes = std::vector<std::byte>;

/// Bank and number of a parameter.
using ParameterName = std::pair<std::int32_t, std::int32_t>;

/// Values of a set of properties, by the text of their keys.
using PropertyValues = std::map<std::string, platform::RegistryValue>;

/// A set's key in the registry.
struct PropertySet {
    bool exists = false;
    int generation = 0;  ///< Another one for a key that is made anew: who has the last one open has nothing.
    PropertyValues values;
};

struct ModelDevice {
    bool isActive = true;
    bool hasVolume = true;
    float scalar = 1.0f;
    bool scalarFails = false;
};

/// What lies in the module folder under a module's name.
enum class ModuleFile { missing, text, withoutCreate, module };

/// What the modules answer.
struct ModuleAnswers {
    bool hardware = false;
    bool createsNull = false;
    bool countsAreWrong = false;
    std::uint32_t version = 1;
};

/// An engine as its document tells it.
struct ModelDocument {
    bool isHardware = false;
    GUID engineId{};
    std::uint32_t presetVersion = 0;
    std::string outEndpointId;

    bool operator==(const ModelDocument&) const = default;
};

struct ModelEngine {
    ModelDocument document;
    std::string module;  ///< The file that is loaded; empty for none.
    bool hasInstance = false;
    bool mustBeAwake = false;
    bool mayBeAwake = false;
    std::map<ParameterName, Bytes> parameters;  ///< As the instance knows them.
};

/// One parameter of an engine, and where its bytes come from.
struct ModelParameter {
    ParameterName name;
    std::uint32_t policy = 0;
    std::uint32_t size = 0;
    Bytes byDefault;
    Bytes preset;

    [[nodiscard]] const Bytes& effective() const {
        return policy == 1 || preset.empty() ? byDefault : preset;
    }
};

using ModelChunks = std::vector<std::vector<ModelParameter>>;

/// Values and rules in plain sequence: what a core must be in once it has come to rest. It knows nothing of
/// how a core goes there, so it says nothing of the order of what happens on the way.
class WalkModel {
public:
    WalkModel();

    // What is around the core; changed by the walk as it likes, and looked at by the model as it is told.
    std::map<std::string, ModelDevice> devices;
    std::map<std::string, PropertySet> userSets;  ///< By the endpoint's identifier.
    PropertyValues replacement;                   ///< What the store of someone else's has.
    std::map<std::string, ModuleFile> files;
    ModuleAnswers answers;

    // What is done to the core.
    void setEndpoint(const std::string& id);
    void setReplaced(bool isReplaced);
    void setAllowed(bool isAllowed);
    void lock(const StreamFormat& in, const StreamFormat& out);
    void unlock() { isLocked = false; }
    void tellVolume(const std::string& endpointId, float scalar);
    void tellDisabled(const std::string& endpointId, bool isDisabled);
    void tellProperty(const std::string& endpointId, REFPROPERTYKEY key);
    /// The watch on the core's own set reports all that is in it.
    void reportSet();

    // What it must be then.
    std::string endpoint;
    GUID fxId{};
    std::uint32_t presetVersion = 0;
    std::uint32_t modeFlags = 0;
    GUID engineId{};
    std::optional<ModelChunks> chunks;
    bool hasClients = false;
    bool isAllowed = true;
    bool isBuilt = false;
    std::optional<ModelEngine> engine;
    bool isHardware = false;
    bool isLocked = false;
    StreamFormat in{.channels = 0, .rate = 0};
    StreamFormat out{.channels = 0, .rate = 0};
    bool isDisabled = false;
    float volumeDb = 0.0f;
    std::uint32_t moduleVersion = 0;
    engine::EngineControls controls;
    bool pulseIsCertain = false;

    [[nodiscard]] bool isActive() const { return isBuilt && in.rate != 0; }
    [[nodiscard]] bool isProcessing() const { return isActive() && engine->hasInstance; }
    [[nodiscard]] bool hasVolume() const { return deviceHasVolume; }
    [[nodiscard]] bool hasStore() const { return store.kind != Store::Kind::none; }
    /// Whether the core hears of what is written to the own endpoint's set.
    [[nodiscard]] bool hearsOfWrites() const { return store.kind == Store::Kind::registry && readable(); }
    [[nodiscard]] bool isLoaded(const std::string& module) const {
        return engine && engine->module == module;
    }

    // How often at most since the last `forgetCounts`, and at least, where that is the same.
    int createsAtMost = 0;
    int startsAtLeast = 0;
    int clears = 0;
    void forgetCounts() { createsAtMost = startsAtLeast = clears = 0; }

    /// A chunk as it is before any preset; none for one that the engine doesn't have.
    [[nodiscard]] const std::vector<ModelParameter>* chunkOf(const GUID& engine, std::size_t index) const;

private:
    struct Store {
        enum class Kind { none, registry, replacement };
        Kind kind = Kind::none;
        std::string endpoint;
        int generation = 0;
    };

    [[nodiscard]] const PropertyValues* readable() const;
    [[nodiscard]] std::optional<std::string> text(REFPROPERTYKEY key) const;
    [[nodiscard]] std::uint32_t number(REFPROPERTYKEY key) const;
    [[nodiscard]] const platform::RegistryValue* value(REFPROPERTYKEY key) const;
    [[nodiscard]] bool readClients() const;

    void chooseStore(bool isOtherDevice);
    void takeEffect(const GUID& id);
    void readChunk(std::size_t index);
    void applyBlob(std::vector<ModelParameter>& chunk, const Bytes& blob);
    void setClients(bool are);
    void onProperty(REFPROPERTYKEY key);
    void followEffect();

    void teardown() { isBuilt = false; }
    void buildIfSelected();
    [[nodiscard]] ModelEngine made(const ModelDocument& document);
    void start();
    void send(const ModelParameter& parameter);
    void readVolume();
    void sendVolume();
    void tellInstance(const ParameterName& name, const Bytes& bytes);
    void askVersion();

    Store store;
    bool isReplaced = false;
    bool deviceHasVolume = false;  ///< As it was when the core opened it.
    bool hasDevice = false;
    std::map<std::string, ModelChunks> layouts;  ///< By the engine's text.
};

}  // namespace korva::test
