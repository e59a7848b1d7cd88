#include "framework/nested_watch.h"

namespace korva::framework {

class NestedWatch::Chain {
public:
    explicit Chain(std::vector<Level> watched) {
        links.reserve(watched.size());
        for (Level& level : watched) {
            links.push_back(Link{std::move(level), this, links.size()});
        }
    }

    void begin(std::size_t index) {
        if (index < links.size()) {
            Link& link = links[index];
            link.level.value->subscribe(&link, &beforeChange, &afterChange, Position::last, false, true);
        }
    }

    // The listeners go first: the value may change while the work is undone.
    void end(std::size_t index) {
        if (index < links.size()) {
            Link& link = links[index];
            link.level.value->unsubscribe(&link, &beforeChange, &afterChange);
            leave(link);
        }
    }

private:
    struct Link {
        Level level;
        Chain* chain;
        std::size_t index;
        bool isEntered = false;
    };

    static void beforeChange(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*,
                             Reason) {
        Link& link = *static_cast<Link*>(context);
        link.chain->leave(link);
    }

    static void afterChange(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*,
                            Reason) {
        Link& link = *static_cast<Link*>(context);
        link.chain->enter(link);
    }

    // A level that begins between a value's two phases is called as it begins, and again after the change: it
    // is entered once.
    void enter(Link& link) {
        if (link.isEntered || (link.level.onlyWhileSet && link.level.value->isDefault())) {
            return;
        }
        link.isEntered = true;
        if (link.level.enter) {
            link.level.enter();
        }
        begin(link.index + 1);
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

NestedWatch::NestedWatch(std::vector<Level> levels) : chain(std::make_unique<Chain>(std::move(levels))) {
    chain->begin(0);
}

NestedWatch& NestedWatch::operator=(NestedWatch&& other) noexcept {
    drop();
    chain = std::move(other.chain);
    return *this;
}

NestedWatch::~NestedWatch() {
    drop();
}

void NestedWatch::drop() {
    if (const std::unique_ptr<Chain> dropped = std::move(chain)) {
        dropped->end(0);
    }
}

}  // namespace korva::framework
