// A listener that writes down what it is told.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "framework/observable.h"

namespace korva::test {

using Diary = std::vector<std::string>;

/// Listens to values of type std::uint32_t under a name. Each call becomes a line of a diary that several
/// listeners may share: "meter before 0 to 5", with " (subscribed)" or " (removed)" if there is no change.
/// What stands in `onPropagate`, `onBefore` and `onAfter` is done after the line is written.
class DiaryListener {
public:
    using Value = framework::Observable<std::uint32_t>;

    DiaryListener(Diary& book, std::string listenerName) : diary(book), name(std::move(listenerName)) {}
    DiaryListener(const DiaryListener&) = delete;
    DiaryListener& operator=(const DiaryListener&) = delete;

    framework::SlotHandle subscribe(Value& value, framework::Position position = framework::Position::last,
                                    bool callBeforeNow = false, bool callAfterNow = false) {
        return value.subscribe(this, &before, &after, position, callBeforeNow, callAfterNow);
    }
    void unsubscribe(Value& value, bool callBeforeNow = false, bool callAfterNow = false) {
        value.unsubscribe(this, &before, &after, callBeforeNow, callAfterNow);
    }
    framework::SlotHandle propagate(Value& value, framework::Position position = framework::Position::last,
                                    bool callNow = false) {
        return value.addPropagator(this, &propagated, position, callNow);
    }
    void stopPropagating(Value& value) { value.removePropagator(this, &propagated); }

    static void propagated(void* context, framework::ListenedTo&, framework::ActiveObject&,
                           const void* published, void* pending, const void*, framework::Reason reason) {
        auto& self = *static_cast<DiaryListener*>(context);
        self.write("propagates", published, pending, reason);
        if (self.onPropagate) {
            self.onPropagate(*static_cast<std::uint32_t*>(pending));
        }
    }

    static void before(void* context, framework::ListenedTo&, framework::ActiveObject&, const void* published,
                       void* pending, const void*, framework::Reason reason) {
        auto& self = *static_cast<DiaryListener*>(context);
        self.write("before", published, pending, reason);
        if (self.onBefore) {
            self.onBefore();
        }
    }

    static void after(void* context, framework::ListenedTo&, framework::ActiveObject&, const void* published,
                      void* pending, const void*, framework::Reason reason) {
        auto& self = *static_cast<DiaryListener*>(context);
        self.write("after", published, pending, reason);
        if (self.onAfter) {
            self.onAfter();
        }
    }

    std::function<void(std::uint32_t& pending)> onPropagate;
    std::function<void()> onBefore;
    std::function<void()> onAfter;

private:
    void write(const char* what, const void* published, const void* pending, framework::Reason reason) {
        diary.push_back(name + " " + what + " " + text(published) + " to " + text(pending) + text(reason));
    }

    static std::string text(const void* value) {
        return std::to_string(*static_cast<const std::uint32_t*>(value));
    }

    static std::string text(framework::Reason reason) {
        switch (reason) {
            case framework::Reason::change:
                return "";
            case framework::Reason::subscribed:
                return " (subscribed)";
            case framework::Reason::removed:
                return " (removed)";
            default:
                return " (another reason)";
        }
    }

    Diary& diary;
    std::string name;
};

}  // namespace korva::test
