// bench_params_partner PAGE KEY: does what it is told to by the page in that file, each time a while after it
// was told, until it is told to end or nobody tells it anything for half a minute. KEY is below
// HKEY_LOCAL_MACHINE.
#include <sqlite3.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <exception>

#include "bench/params/shared_page.h"
#include "platform/registry.h"

namespace {

using namespace korva;
using bench::Order;
using bench::SharedFile;

/// Long enough for the one who told it to be asleep again.
constexpr std::int64_t pauseNs = 200'000;

void stayBusy() {
    const std::int64_t end = bench::nowNs() + pauseNs;
    while (bench::nowNs() < end) {
    }
}

bool setValue(const platform::RegistryKey& key, std::uint32_t number) {
    const auto data = std::bit_cast<std::array<std::byte, sizeof(number)>>(number);
    return key.setValue("level", platform::registry_type::dword, data) == 0;
}

const SharedFile* pageOfHook = nullptr;

/// The registry says nothing of its commits, but the library that keeps its file does.
void noteCommits(const SharedFile& page) {
    using Extension = void (*)();
    const auto hook = [](sqlite3* connection, const char**, const sqlite3_api_routines*) -> int {
        const auto note = [](void*) -> int {
            (*pageOfHook)->begunNs = bench::nowNs();
            return 0;
        };
        sqlite3_commit_hook(connection, note, nullptr);
        return SQLITE_OK;
    };
    pageOfHook = &page;
    int (*const entry)(sqlite3*, const char**, const sqlite3_api_routines*) = hook;
    sqlite3_auto_extension(reinterpret_cast<Extension>(entry));
}

void obey(const SharedFile& page, const platform::RegistryKey& key) {
    std::uint32_t done = 0;
    while (page->orders.waitWhile(done, 30) && page->order != Order::end) {
        ++done;
        stayBusy();
        if (page->order == Order::raiseWord) {
            page->begunNs = bench::nowNs();
            page->target.raise();
        } else if (!setValue(key, done)) {
            page->hasFailed = true;
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        return 2;
    }
    try {
        const SharedFile page(arguments[1]);
        noteCommits(page);
        platform::RegistryKey key;
        if (platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                .create(arguments[2], platform::RegistryAccess::readWrite, key) != 0) {
            return 1;
        }
        obey(page, key);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_params_partner: %s\n", error.what());
        return 1;
    }
}
