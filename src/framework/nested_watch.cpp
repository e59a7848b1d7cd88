#include "framework/nested_watch.h"

#include <cstdint>

namespace korva::framework {

class NestedWatch::Chain : public std::enable_shared_from_this<Chain> {
public:
    explicit Chain(std::vector<Level> watched) {
        links.reserve(watched.size());
        for (Level& level : watched) {
            links.push_back(Link{std::move(level), this, links.size()});
        }
    }

    // A level that begins among its value's before functions waits for the after functions: the value that it
    // would be entered with is about to go.
    void begin(std::size_t index) {
        if (index < links.size() && !links[index].isWatched) {
            Link& link = links[index];
            link.isWatched = true;
            ObservableBase& value = *link.level.value;
            value.subscribe(&link, &beforeChange, &afterChange, Position::last, false,
                            !value.isAboutToChange());
        }
    }

    // The listeners go first: the value may change while the work is undone.
    void end(std::size_t index) {
        if (index < links.size() && links[index].isWatched) {
            Link& link = links[index];
            link.isWatched = false;
            link.level.value->unsubscribe(&link, &beforeChange, &afterChange);
            leave(link);
        }
    }

private:
    struct Link {
        Level level;
        Chain* chain;
        std::size_t index;
        bool isWatched = false;
        bool isEntered = false;
        std::uint64_t entries = 0;
    };

    static void beforeChange(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*,
                             Reason) {
        Link& link = *static_cast<Link*>(context);
        const std::shared_ptr<Chain> kept = link.chain->shared_from_this();  // actions may drop the watch
        kept->leave(link);
    }

    static void afterChange(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*,
                            Reason) {
        Link& link = *static_cast<Link*>(context);
        const std::shared_ptr<Chain> kept = link.chain->shared_from_this();
        kept->enter(link);
    }

    // Called as the level begins, and after each change. It may be called once more for a value that it was
    // entered with already, and once for a level that is about to end.
    void enter(Link& link) {
        if (!link.isWatched || link.isEntered || (link.level.onlyWhileSet && link.level.value->isDefault())) {
            return;
        }
        link.isEntered = true;
        const std::uint64_t entry = ++link.entries;
        if (link.level.enter) {
            link.level.enter();
        }
        // The action itself may have ended this entry, and begun another one.
        if (link.isEntered && link.entries == entry) {
            begin(link.index + 1);
        }
    }

    void leave(Link& link) {
        if (!link.isEntered) {
            return;
        }
        link.isEntered = false;
        end(link.index + 1);
        if (link.level.leave) {
            link.level.leave();
        }
    }

    std::vector<Link> links;  // never grows: listeners point at them
};

NestedWatch::NestedWatch() noexcept = default;
NestedWatch::NestedWatch(NestedWatch&& other) noexcept = default;

NestedWatch::NestedWatch(std::vector<Level> levels) : chain(std::make_shared<Chain>(std::move(levels))) {
    try {
        chain->begin(0);
    } catch (...) {
        drop();
        throw;
    }
}

NestedWatch& NestedWatch::operator=(NestedWatch&& other) noexcept {
    NestedWatch taken(std::move(other));
    std::swap(chain, taken.chain);
    return *this;
}

NestedWatch::~NestedWatch() {
    drop();
}

void NestedWatch::drop() {
    if (const std::shared_ptr<Chain> dropped = std::move(chain)) {
        dropped->end(0);
    }
}

}  // namespace korva::framework
