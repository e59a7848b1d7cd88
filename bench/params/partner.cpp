#include "bench/params/partner.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace korva::bench {

Partner::Partner(const std::string& keyPath) : shared(folder.file("page")) {
    std::string program = KORVA_BENCH_PARTNER;
    std::string page = folder.file("page");
    std::string key = keyPath;
    const std::array arguments{program.data(), page.data(), key.data(), static_cast<char*>(nullptr)};
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) {
        throw std::runtime_error("no partner process");
    }
}

Partner::~Partner() {
    tell(Order::end);
    waitpid(child, nullptr, 0);
}

void Partner::tell(Order order) const {
    shared->order = order;
    shared->orders.raise();
}

std::int64_t Partner::timeOf(Order order) const {
    const std::uint32_t answers = shared->answers.count();
    tell(order);
    if (!shared->answers.waitWhile(answers, 10) || shared->hasFailed) {
        throw std::runtime_error("what the partner process did wasn't heard of");
    }
    return shared->heardNs - shared->begunNs;
}

void answer(const SharedFile& page) noexcept {
    page->heardNs = nowNs();
    page->answers.raise();
}

}  // namespace korva::bench
