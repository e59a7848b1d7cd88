// A dispatcher that is kept from its queues.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "framework/dispatcher.h"
#include "tests/support/one_time_gate.h"

namespace korva::test {

/// A dispatcher whose thread runs a task until it is let go.
class BusyDispatcher {
public:
    BusyDispatcher() {
        worker->postAndForget([begun = begun, mayEnd = mayEnd] {
            begun->open();
            EXPECT_TRUE(mayEnd->pass());
        });
        EXPECT_TRUE(begun->pass());
    }
    ~BusyDispatcher() { end(); }
    BusyDispatcher(const BusyDispatcher&) = delete;
    BusyDispatcher& operator=(const BusyDispatcher&) = delete;

    void end() { mayEnd->open(); }

private:
    // The task may outlive this object.
    const std::shared_ptr<OneTimeGate> begun = std::make_shared<OneTimeGate>();
    const std::shared_ptr<OneTimeGate> mayEnd = std::make_shared<OneTimeGate>();

public:
    framework::DispatcherUse worker = framework::Dispatcher::start();
};

}  // namespace korva::test
