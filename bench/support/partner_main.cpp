// bench_partner PAGE KEY NAME TYPE BYTES COUNT_AT: does what it is told to by the page in that file, each
// time a while after it was told, until it is told to end or nobody tells it anything for half a minute. The
// others are the fields of a `CountingValue`.
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/shared_page.h"
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

class OwnValue {
public:
    OwnValue(const char* keyPath, std::string valueName, std::uint32_t valueType, std::size_t bytes,
             std::size_t numberAt)
        : name(std::move(valueName)), type(valueType), data(bytes), countAt(numberAt) {
        if (countAt + sizeof(std::uint32_t) > bytes ||
            platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                    .create(keyPath, platform::RegistryAccess::readWrite, key) != 0) {
            throw std::runtime_error("no such value");
        }
    }

    [[nodiscard]] bool set(std::uint32_t count) {
        std::memcpy(data.data() + countAt, &count, sizeof count);
        return key.setValue(name, type, data) == 0;
    }

private:
    platform::RegistryKey key;
    const std::string name;
    const std::uint32_t type;
    std::vector<std::byte> data;
    const std::size_t countAt;
};

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

void obey(const SharedFile& page, OwnValue& value) {
    std::uint32_t done = 0;
    while (page->orders.waitWhile(done, 30) && page->order != Order::end) {
        ++done;
        stayBusy();
        if (page->order == Order::raiseWord) {
            page->begunNs = bench::nowNs();
            page->target.raise();
        } else if (!value.set(done)) {
            page->hasFailed = true;
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 7) {
        return 2;
    }
    try {
        const SharedFile page(arguments[1]);
        noteCommits(page);
        OwnValue value(arguments[2], arguments[3], static_cast<std::uint32_t>(std::stoul(arguments[4])),
                       std::stoul(arguments[5]), std::stoul(arguments[6]));
        obey(page, value);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_partner: %s\n", error.what());
        return 1;
    }
}
