#include "embedded_registry/key_search.h"

namespace korva::platform::embedded {

KeySearch::KeySearch(Connection& connection)
    : sequenceOf(connection.get(), "SELECT sequence FROM keys WHERE id = ?"),
      childOf(connection.get(), "SELECT id FROM names WHERE parent = ? AND folded = ?"),
      linkIn(connection.get(), "SELECT 1 FROM vals WHERE key = ? AND folded = 'symboliclinkvalue'") {}

std::optional<std::int64_t> KeySearch::sequence(KeyId key) {
    Run run(sequenceOf);
    return run.bind(key).step() ? std::optional(run.number(0)) : std::nullopt;
}

std::optional<KeyId> KeySearch::child(KeyId parent, std::string_view folded) {
    Run run(childOf);
    return run.bind(parent).bind(folded).step() ? std::optional(run.number(0)) : std::nullopt;
}

bool KeySearch::isLink(KeyId key) {
    return Run(linkIn).bind(key).step();
}

std::size_t KeySearch::descend(KeyChain& chain, const Path& path) {
    std::size_t depth = 0;
    for (; depth < path.size(); ++depth) {
        const auto next = child(chain.back(), path[depth].folded);
        if (!next) {
            break;
        }
        chain.push_back(*next);
    }
    return depth;
}

}  // namespace korva::platform::embedded
