// A question for a format, and its answer with all that has to hold of it.
#pragma once

#include <gtest/gtest.h>

#include "tests/system/support/hosted_object.h"

namespace korva::test {

enum class Side { input, output };

/// What an object says to a format.
struct FormatAnswer {
    HRESULT result = result::failure;
    ComPointer<published::IAudioMediaType> supported;

    /// The suggestion's format; all zero without one.
    [[nodiscard]] published::UNCOMPRESSEDAUDIOFORMAT format() const {
        published::UNCOMPRESSEDAUDIOFORMAT told{};
        if (supported) {
            EXPECT_EQ(supported->GetUncompressedAudioFormat(&told), result::ok);
        }
        return told;
    }
};

[[nodiscard]] inline FormatAnswer askFor(HostedObject& object, Side side,
                                         published::IAudioMediaType* opposite,
                                         published::IAudioMediaType* requested) {
    FormatAnswer answer;
    auto** const place = answer.supported.receive();
    *place = reinterpret_cast<published::IAudioMediaType*>(&object);  // to be cleared
    answer.result = side == Side::input ? object.apo->IsInputFormatSupported(opposite, requested, place)
                                        : object.apo->IsOutputFormatSupported(opposite, requested, place);
    EXPECT_EQ(answer.supported.get() == requested && requested != nullptr, answer.result == result::ok);
    EXPECT_EQ(static_cast<bool>(answer.supported), published::succeeded(answer.result));
    return answer;
}

/// The same on both sides, which give the same answer; asked by formats.
[[nodiscard]] inline FormatAnswer askForFormat(HostedObject& object,
                                               const published::UNCOMPRESSEDAUDIOFORMAT* opposite,
                                               const published::UNCOMPRESSEDAUDIOFORMAT& requested) {
    OwnMediaType opposites(opposite != nullptr ? *opposite : requested);
    OwnMediaType wish(requested);
    published::IAudioMediaType* const known = opposite != nullptr ? &opposites : nullptr;
    const FormatAnswer other = askFor(object, Side::output, known, &wish);
    FormatAnswer answer = askFor(object, Side::input, known, &wish);
    EXPECT_EQ(answer.result, other.result);
    EXPECT_EQ(wish.references(), answer.result == result::ok ? 2 : 0);
    if (answer.result == result::ok) {
        answer.supported.release();  // it is the wish, which goes
    }
    return answer;
}

}  // namespace korva::test
