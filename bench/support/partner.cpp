#include "bench/support/partner.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

namespace korva::bench {

Partner::Partner(const CountingValue& value) : shared(folder.file("page")) {
    std::vector<std::string> texts{KORVA_BENCH_PARTNER,
                                   folder.file("page"),
                                   value.keyPath,
                                   value.name,
                                   std::to_string(value.type),
                                   std::to_string(value.bytes),
                                   std::to_string(value.countAt)};
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
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
