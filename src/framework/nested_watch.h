// Something that exists while several values are set, one inside the other.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "framework/observable_base.h"

namespace korva::framework {

/// A chain of levels, each a value with what to do when it is there and what to undo when it goes. A level is
/// watched only while the one above it is entered; entering it does its work, then begins the next one;
/// leaving it ends the next one, then undoes its work. So what was built from the top down comes apart from
/// the inside out, and each undo answers one do, whatever the value's phase when a level begins or ends.
///
/// Levels are entered after a change and left before one, when the value still is the old one. Ends with
/// `drop` or its destructor, which leave what is entered. [the values' owner]
class NestedWatch {
public:
    using Action = std::function<void()>;

    /// One value of the chain.
    struct Level {
        ObservableBase* value = nullptr;
        bool onlyWhileSet = true;  ///< Else it is entered with every value, the default included.
        Action enter;              ///< May be empty, like `leave`.
        Action leave;
    };

    NestedWatch() noexcept;
    /// Begins with the first level.
    explicit NestedWatch(std::vector<Level> levels);
    NestedWatch(NestedWatch&& other) noexcept;
    NestedWatch& operator=(NestedWatch&& other) noexcept;
    ~NestedWatch();

    void drop();

private:
    class Chain;
    std::shared_ptr<Chain> chain;
};

}  // namespace korva::framework
