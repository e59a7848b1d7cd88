#include "apo/registration/registry_script.h"

#include <algorithm>

#include "platform/empty_keys.h"
#include "platform/registry_values.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using namespace platform::registry_result;

RegistryResult applyKey(const RegistryKey& parent, const ScriptKey& described);

RegistryResult applyAll(const RegistryKey& parent, const std::vector<ScriptKey>& keys) {
    for (const ScriptKey& key : keys) {
        if (const RegistryResult result = applyKey(parent, key); result != success) {
            return result;
        }
    }
    return success;
}

RegistryResult applyKey(const RegistryKey& parent, const ScriptKey& described) {
    if (described.removal == KeyRemoval::whole) {
        const RegistryResult result = parent.deleteTree(described.name);
        if (result != success && result != notFound) {
            return result;
        }
    }
    RegistryKey key;
    if (const RegistryResult result = parent.create(described.name, RegistryAccess::write, key);
        result != success) {
        return result;
    }
    for (const auto& [name, value] : described.values) {
        if (const RegistryResult result = key.setValue(name, value.type, value.data); result != success) {
            return result;
        }
    }
    return applyAll(key, described.keys);
}

/// The first failure of several steps, where to find nothing is none.
class Failures {
public:
    void add(RegistryResult result) {
        if (first == success && result != notFound) {
            first = result;
        }
    }

    RegistryResult first = success;
};

void undoKey(const RegistryKey& parent, const ScriptKey& described, Failures& failures);

void undoAll(const RegistryKey& parent, const std::vector<ScriptKey>& keys, Failures& failures) {
    std::for_each(keys.rbegin(), keys.rend(), [&](const ScriptKey& key) { undoKey(parent, key, failures); });
}

/// Takes back what the script has in the key.
void emptyKey(const RegistryKey& key, const ScriptKey& described, Failures& failures) {
    undoAll(key, described.keys, failures);
    if (described.removal == KeyRemoval::never) {
        return;
    }
    for (const ScriptValue& value : described.values) {
        failures.add(key.deleteValue(value.name));
    }
}

void undoKey(const RegistryKey& parent, const ScriptKey& described, Failures& failures) {
    if (described.removal == KeyRemoval::whole) {
        failures.add(parent.deleteTree(described.name));
        return;
    }
    RegistryKey key;
    const RegistryResult result = parent.open(described.name, RegistryAccess::readWrite, key);
    failures.add(result);
    if (result != success) {
        return;
    }
    emptyKey(key, described, failures);
    if (described.removal == KeyRemoval::ifEmpty) {
        failures.add(platform::deleteIfEmpty(parent, described.name));
    }
}

}  // namespace

HRESULT applyRegistryScript(const RegistryScript& script) {
    for (const ScriptRoot& block : script) {
        RegistryResult result = success;
        const RegistryKey root = RegistryKey::root(block.root, &result);
        result = root ? applyAll(root, block.keys) : result;
        if (result != success) {
            return platform::hresultOf(result);
        }
    }
    return platform::hresultOf(success);
}

HRESULT undoRegistryScript(const RegistryScript& script) {
    Failures failures;
    std::for_each(script.rbegin(), script.rend(), [&](const ScriptRoot& block) {
        RegistryResult result = success;
        const RegistryKey root = RegistryKey::root(block.root, &result);
        failures.add(result);
        if (root) {
            undoAll(root, block.keys, failures);
        }
    });
    return platform::hresultOf(failures.first);
}

}  // namespace korva::apo
