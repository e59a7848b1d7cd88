// A value of a set of properties, read through its store and written to its key, beside the same bytes in a
// plain table of SQLite's.
//
// Both files hold the same values: small ones, and blobs of 2 KB. A value is written with other bytes each
// time, since SQLite leaves out a page that stays as it is.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/params/sqlite_table.h"
#include "bench/support/temporary_folder.h"
#include "framework/dispatcher.h"
#include "params/effect_keys.h"
#include "params/fx_property_store.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "tests/support/own_registry.h"

namespace {

using namespace korva;
using platform::RegistryKey;

constexpr std::string_view endpointId = "{0.0.0.00000000}.{5f0c2d2e-7a57-4c6b-9f0e-3a1b8f6a9d11}";
constexpr std::uint32_t valuesOfKind = 32;

enum class Kind : std::uint32_t { dword = 0, blob = params::effect_property::firstChunk };

constexpr std::size_t bytesOf(Kind kind) {
    return kind == Kind::dword ? 4 : 2048;
}

constexpr std::uint32_t typeOf(Kind kind) {
    return kind == Kind::dword ? platform::registry_type::dword : platform::registry_type::binary;
}

PROPERTYKEY propertyOf(Kind kind, std::uint32_t index) {
    return {params::selectionFormat, static_cast<DWORD>(kind) + index};
}

std::vector<std::byte> dataOf(Kind kind, int fill) {
    return std::vector<std::byte>(bytesOf(kind), static_cast<std::byte>(fill));
}

/// Gives each value of a set to `set`: its name, type and data.
template <class Set>
void fill(const Set& set) {
    for (const Kind kind : {Kind::dword, Kind::blob}) {
        for (std::uint32_t i = 0; i < valuesOfKind; ++i) {
            set(platform::KeyToText(propertyOf(kind, i)), typeOf(kind), dataOf(kind, static_cast<int>(i)));
        }
    }
}

RegistryKey filledKey() {
    RegistryKey key;
    const auto root = RegistryKey::root(platform::RegistryRoot::localMachine);
    if (root.create(params::propertySetPath(endpointId, params::property_set::user),
                    platform::RegistryAccess::readWrite, key) != 0) {
        throw std::runtime_error("no key for the properties");
    }
    fill([&](const std::string& name, std::uint32_t type, std::span<const std::byte> data) {
        if (key.setValue(name, type, data) != 0) {
            throw std::runtime_error("a property can't be set");
        }
    });
    return key;
}

// A store has an owner, as in the object.
void onDispatcher(const std::function<void()>& action) {
    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<params::FxPropertyStore>());
    worker->runSynchronously(action);
}

void getFromStore(benchmark::State& state, Kind kind) {
    const test::OwnRegistry registry;
    const RegistryKey key = filledKey();
    onDispatcher([&] {
        const auto store = params::FxPropertyStore::Open(endpointId, params::property_set::user);
        std::uint32_t turn = 0;
        for (auto _ : state) {
            PROPVARIANT value{};
            const HRESULT result = store->GetValue(propertyOf(kind, turn++ % valuesOfKind), &value);
            if (result != 0 || value.vt != (kind == Kind::dword ? VT_UI4 : VT_BLOB)) {
                state.SkipWithError("the property was not read");
            }
            PropVariantClear(&value);
        }
    });
}

constexpr std::int64_t tableKey = 9;

void getFromTable(benchmark::State& state, Kind kind) {
    const bench::TemporaryFolder folder;
    bench::SqliteTable table(folder.file("values"));
    std::array<std::string, valuesOfKind> names;
    fill([&](const std::string& name, std::uint32_t type, std::span<const std::byte> data) {
        table.set(tableKey, name, type, data);
    });
    for (std::uint32_t i = 0; i < valuesOfKind; ++i) {
        names[i] = platform::KeyToText(propertyOf(kind, i));
    }
    std::array<std::byte, bytesOf(Kind::blob)> data{};
    std::size_t turn = 0;
    for (auto _ : state) {
        if (table.get(tableKey, names[turn++ % valuesOfKind], data) != bytesOf(kind)) {
            state.SkipWithError("the value was not read");
        }
        benchmark::DoNotOptimize(data.data());
    }
}

void setInKey(benchmark::State& state, Kind kind) {
    const test::OwnRegistry registry;
    const RegistryKey key = filledKey();
    const std::string name = platform::KeyToText(propertyOf(kind, 1));
    const std::array data = {dataOf(kind, 0x5A), dataOf(kind, 0xA5)};
    std::size_t turn = 0;
    for (auto _ : state) {
        if (key.setValue(name, typeOf(kind), data[turn++ % 2]) != 0) {
            state.SkipWithError("the value was not set");
        }
    }
}

void setInTable(benchmark::State& state, Kind kind) {
    const bench::TemporaryFolder folder;
    bench::SqliteTable table(folder.file("values"));
    fill([&](const std::string& name, std::uint32_t type, std::span<const std::byte> data) {
        table.set(tableKey, name, type, data);
    });
    const std::string name = platform::KeyToText(propertyOf(kind, 1));
    const std::array data = {dataOf(kind, 0x5A), dataOf(kind, 0xA5)};
    std::size_t turn = 0;
    for (auto _ : state) {
        table.set(tableKey, name, typeOf(kind), data[turn++ % 2]);
    }
}

BENCHMARK_CAPTURE(getFromStore, dword, Kind::dword)->Name("get/dword/korva");
BENCHMARK_CAPTURE(getFromTable, dword, Kind::dword)->Name("get/dword/sqlite");
BENCHMARK_CAPTURE(getFromStore, blob, Kind::blob)->Name("get/blob/korva");
BENCHMARK_CAPTURE(getFromTable, blob, Kind::blob)->Name("get/blob/sqlite");
// A writer waits for the disk now and then.
BENCHMARK_CAPTURE(setInKey, dword, Kind::dword)->Name("put/dword/korva")->UseRealTime();
BENCHMARK_CAPTURE(setInTable, dword, Kind::dword)->Name("put/dword/sqlite")->UseRealTime();
BENCHMARK_CAPTURE(setInKey, blob, Kind::blob)->Name("put/blob/korva")->UseRealTime();
BENCHMARK_CAPTURE(setInTable, blob, Kind::blob)->Name("put/blob/sqlite")->UseRealTime();

}  // namespace
