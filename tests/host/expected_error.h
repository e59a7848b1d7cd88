// What a host says when it gets no further.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korva/host/host_error.h"

namespace korva::test {

/// Whether `action()` throws `HostError` with these parts.
template <class Action>
testing::AssertionResult failsWith(const Action& action, const std::vector<std::string>& parts) {
    try {
        action();
    } catch (const tool::HostError& error) {
        const std::string words = error.what();
        for (const std::string& part : parts) {
            if (words.find(part) == std::string::npos) {
                return testing::AssertionFailure() << "no '" << part << "' in: " << words;
            }
        }
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "nothing was thrown";
}

}  // namespace korva::test
