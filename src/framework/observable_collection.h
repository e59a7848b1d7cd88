// Collections that others listen to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/active_object.h"
#include "framework/listened_to.h"
#include "framework/ref.h"

namespace korva::framework {

/// An ordered collection of active objects, which it holds: an element that leaves it, or is left in it when
/// it closes, is closed unless others hold it too. Listeners are told of each element that comes and goes.
///
/// A change runs like a value's: before functions, the change itself, after functions. A change from inside
/// such a walk is dropped; a listener that comes or goes meanwhile does so after the rest of the walk.
///
/// Every public operation may be called by any thread; the owner's thread does it.  [any, blocks]
class ObservableCollection final : public ObjectClass<ObservableCollection, ActiveObject> {
public:
    using Element = Held<ActiveObject>;

    /// The last move of an element to another place.
    struct Move {
        const void* elementPointer = nullptr;
        std::int32_t previousIndex = -1;
        std::int32_t newIndex = -1;

        friend bool operator==(const Move&, const Move&) = default;
    };

    static constexpr std::size_t atEnd = static_cast<std::size_t>(-1);

    static void describeMembers(ClassInfo& info);

    /// Inserts an element before the one at `index`; false for a null element, for an index behind the end,
    /// and from inside a walk.
    bool insert(Element element, std::size_t index = atEnd);
    /// False where there is no such element, and from inside a walk.
    bool remove(const ActiveObject& element);
    bool removeAt(std::size_t index);
    /// Puts the element at `from` to `to`, counted without it. Only `order` and `lastMove` tell of it.
    bool move(std::size_t from, std::size_t to);
    /// Removes all elements, the last one first.
    bool clear();

    /// [owner]
    [[nodiscard]] const std::vector<Element>& elements() const noexcept { return held; }

    /// Adds two functions, of which either may be null: they are called with an element's address as both
    /// values and reason `added` or `left`. Those asked for are called at once for each element that is
    /// there, in their order. 0 if there are too many listeners.
    SlotHandle subscribe(void* context, ListenerFunction before, ListenerFunction after,
                         Position position = Position::last, bool callBeforeNow = false,
                         bool callAfterNow = false);
    /// Removes the listener as `ObservableBase::unsubscribe` does; the functions asked for are called for
    /// each element that is there, in their order, as if it left.
    void unsubscribe(void* context, ListenerFunction before, ListenerFunction after,
                     bool callBeforeNow = false, bool callAfterNow = false);

    /// The number of elements; it changes after the elements, before the after functions.
    Observable<std::int32_t> size{*this};
    /// Counts the changes of the elements' order: insertions, removals and moves.
    Observable<std::uint32_t> order{*this};
    Observable<Move> lastMove{*this};

private:
    /// The list of listeners, and the walk over it that runs.
    class Listeners final : public ListenedTo {
    public:
        explicit Listeners(ObservableCollection& owner) noexcept : ListenedTo(owner) {}

        SlotHandle add(const SubscriberNode& listener, Position position);
        bool remove(void* context, ListenerFunction before, ListenerFunction after);

        /// Calls that function of every listener with the element.
        void tell(ListenerFunction SubscriberNode::*function, ActiveObject& element, Reason reason);
        /// Calls one function with each element.
        void tellAll(void* context, ListenerFunction function, Reason reason);

    private:
        void walkRest();

        ListenerList<SubscriberNode> list;
        ListenerFunction SubscriberNode::*phase = nullptr;  // of the walk that runs
        ActiveObject* element = nullptr;
        Reason reason = Reason::change;
    };

    class Changing;

    template <class Change>
    bool changeElements(ActiveObject& element, Reason reason, const Change& change);

    bool insertHere(Element&& element, std::size_t index);
    bool removeHere(std::size_t index);
    bool moveHere(std::size_t from, std::size_t to);
    void onClose() override;

    std::vector<Element> held;
    Listeners listeners{*this};
    bool changing = false;
};

}  // namespace korva::framework
