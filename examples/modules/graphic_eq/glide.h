// The way from one response to the next: over soon, and so smooth that it is not heard.
#pragma once

#include <cstddef>
#include <cstdint>

#include "response.h"

namespace equaliser {

/// A response that moves, counted in frames: how sound is cut into blocks makes no difference to it. It may
/// be sent elsewhere at any time, also on its way.  [audio, rt]
class Glide {
public:
    /// Stands at `response` at once.
    void jumpTo(const Response& response);

    /// Sets out for `response`, and gets there after `frames`.
    void moveTo(const Response& response, std::uint32_t frames);

    /// Goes on by a frame.
    void step();

    [[nodiscard]] std::uint32_t framesToGo() const { return framesLeft; }
    /// Where it is.
    [[nodiscard]] const Response& response() const { return now; }
    /// Where it goes, or stands.
    [[nodiscard]] const Response& aim() const { return asked; }
    /// Whether a band does something here or at the end of the way.
    [[nodiscard]] bool needs(std::size_t band) const;

private:
    Response asked;
    Response from;
    Response to;  ///< What was asked for, with flat bands where they come from.
    Response now;
    std::uint32_t framesInAll = 0;
    std::uint32_t framesLeft = 0;
};

}  // namespace equaliser
