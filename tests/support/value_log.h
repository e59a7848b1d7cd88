// What a value was, change by change.
#pragma once

#include <vector>

#include "framework/observable.h"

namespace korva::test {

/// Listens to a value from here on, and keeps what each change brought. Ends before the value's owner, on the
/// owner's thread.  [owner]
template <class T>
class ValueLog {
public:
    explicit ValueLog(framework::Observable<T>& observed) : value(observed) {
        value.subscribe(this, nullptr, &note);
    }
    ~ValueLog() { value.unsubscribe(this, nullptr, &note); }
    ValueLog(const ValueLog&) = delete;
    ValueLog& operator=(const ValueLog&) = delete;

    std::vector<T> values;

private:
    static void note(void* context, framework::ListenedTo&, framework::ActiveObject&, const void* published,
                     void*, const void*, framework::Reason) {
        static_cast<ValueLog*>(context)->values.push_back(*static_cast<const T*>(published));
    }

    framework::Observable<T>& value;
};

}  // namespace korva::test
