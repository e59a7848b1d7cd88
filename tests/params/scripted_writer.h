// A stream that does as it is told.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/stream_write.h"

namespace korva::test {

/// What a scripted stream was given; the test's, and alive as long as the stream.
struct WriterScript {
    bool isOpen = true;
    std::deque<platform::StreamWrite> outcomes;  ///< Of the next writes; after them all is taken.
    std::vector<std::string> written;
    std::vector<const void*> places;  ///< Of what was written, in memory.
    std::vector<platform::WaitHandle> stops;
};

class ScriptedWriter final : public platform::StreamWriter {
public:
    explicit ScriptedWriter(WriterScript& followed) : script(followed) {}

    [[nodiscard]] bool isOpen() const noexcept override { return script.isOpen; }

    [[nodiscard]] platform::StreamWrite write(std::span<const std::byte> data,
                                              std::span<const platform::WaitHandle> stops) noexcept override {
        script.written.emplace_back(reinterpret_cast<const char*>(data.data()), data.size());
        script.places.push_back(data.data());
        script.stops.assign(stops.begin(), stops.end());
        if (script.outcomes.empty()) {
            return {.isDone = true, .byteCount = data.size()};
        }
        const platform::StreamWrite outcome = script.outcomes.front();
        script.outcomes.pop_front();
        return outcome;
    }

private:
    WriterScript& script;
};

}  // namespace korva::test
