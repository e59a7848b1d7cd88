// A call of the recording module that lasts as long as a test likes.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "tests/support/own_folder.h"
#include "tests/support/wait_until.h"

namespace korva::test {

/// Once the recorder has `answer` among its answers, each call of the function waits until `release`.  [any]
class HeldCall {
public:
    explicit HeldCall(std::string heldFunction) : function(std::move(heldFunction)) {
        std::ofstream(file()) << "held";
    }

    [[nodiscard]] std::string answer() const { return "hold:" + function + '=' + file().string(); }
    /// Waits for a call to be held.
    [[nodiscard]] bool isReached() const {
        return waitUntil([&] { return std::filesystem::exists(file().string() + ".reached"); });
    }
    void release() const { std::filesystem::remove(file()); }

private:
    [[nodiscard]] std::filesystem::path file() const { return folder.path() / "hold"; }

    const OwnFolder folder;
    const std::string function;
};

}  // namespace korva::test
