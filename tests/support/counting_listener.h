// A listener that counts how often it is told of anything.
#pragma once

#include "framework/observable_base.h"

namespace korva::test {

/// Listens to a value of any type.
struct CountingListener {
    int propagations = 0;
    int befores = 0;
    int afters = 0;

    void listenTo(framework::ObservableBase& value) {
        value.addPropagator(this, &propagated);
        value.subscribe(this, &before, &after);
    }

    static void propagated(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*,
                           void*, const void*, framework::Reason) {
        ++static_cast<CountingListener*>(context)->propagations;
    }
    static void before(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                       const void*, framework::Reason) {
        ++static_cast<CountingListener*>(context)->befores;
    }
    static void after(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                      const void*, framework::Reason) {
        ++static_cast<CountingListener*>(context)->afters;
    }
};

}  // namespace korva::test
