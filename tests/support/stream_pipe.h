// A pipe: the writing end for what is tested, the reading end for the test.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/stream_write.h"

namespace korva::test {

class StreamPipe {
public:
    /// More bytes than the pipe takes while nobody reads.
    static constexpr std::size_t moreThanFits = 1 << 20;

    /// Raises `std::runtime_error` if the system has no pipe.
    StreamPipe();
    ~StreamPipe();
    StreamPipe(const StreamPipe&) = delete;
    StreamPipe& operator=(const StreamPipe&) = delete;

    /// Gives the writing end away, once.
    [[nodiscard]] platform::StreamHandle takeWriteEnd();

    /// Waits for `count` bytes; gives fewer if the writing end is closed before.  [any, blocks]
    [[nodiscard]] std::string read(std::size_t count);

    /// All that comes until the writing end is closed.  [any, blocks]
    [[nodiscard]] std::string readAll() {
        std::string all;
        for (std::string some = read(4096); !some.empty(); some = read(4096)) {
            all += some;
        }
        return all;
    }

    void closeReadEnd();

private:
    struct Ends;
    std::unique_ptr<Ends> ends;
};

}  // namespace korva::test
