#include "korva/module/check/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "korva/module/check/check_report.h"

namespace korva::tool {
namespace {

constexpr std::byte filling{0xA7};

std::size_t pageBytes() {
    static const auto bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

}  // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, Place place, std::string name)
    : title(std::move(name)), count(bytes) {
    const std::size_t page = pageBytes();
    const std::size_t slack = place == Place::loose ? page : 0;
    inner = std::max<std::size_t>(1, (bytes + page - 1) / page) * page + 2 * slack;
    void* const mapped = mmap(nullptr, inner + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED ||
        mprotect(static_cast<std::byte*>(mapped) + page, inner, PROT_READ | PROT_WRITE) != 0) {
        throw std::bad_alloc();
    }
    pages = static_cast<std::byte*>(mapped);
    std::fill_n(pages + page, inner, filling);
    begin = pages + page + (place == Place::atPageBegin ? 0 : inner - slack - bytes);
    std::fill_n(begin, bytes, std::byte{0});
    forbidMemory(pages, page, "memory before the begin of " + title);
    forbidMemory(pages + page + inner, page, "memory past the end of " + title);
}

GuardedMemory::~GuardedMemory() {
    const std::size_t page = pageBytes();
    allowMemory(pages);
    allowMemory(pages + page);
    allowMemory(pages + page + inner);
    munmap(pages, inner + 2 * page);
}

void GuardedMemory::forbid(const std::string& why) {
    std::byte* const first = pages + pageBytes();
    mprotect(first, inner, PROT_NONE);
    forbidMemory(first, inner, title + " " + why);
    isForbidden = true;
}

void GuardedMemory::allow() {
    if (isForbidden) {
        std::byte* const first = pages + pageBytes();
        mprotect(first, inner, PROT_READ | PROT_WRITE);
        allowMemory(first);
        isForbidden = false;
    }
}

bool GuardedMemory::restIsWhole() const {
    const std::byte* const first = pages + pageBytes();
    const auto isFilling = [](std::byte value) { return value == filling; };
    return std::all_of(first, static_cast<const std::byte*>(begin), isFilling) &&
           std::all_of(static_cast<const std::byte*>(begin) + count, first + inner, isFilling);
}

void GuardedMemory::expectRestWhole() const {
    if (!restIsWhole()) {
        failCheck("writes to memory beside {}{}", title, whereText());
    }
}

}  // namespace korva::tool
