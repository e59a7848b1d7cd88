#include "korva/host/host_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <string_view>
#include <system_error>

#include "korva/host/audio_object_library.h"
#include "korva/host/host_error.h"

namespace korva::tool {

const char* const hostUsage =
    "usage: korva_host [OPTION VALUE]...\n"
    "\n"
    "Plays a sound that it makes itself through an audio object, and tells the highest levels.\n"
    "\n"
    "  --library FILE        the object's library; else the one beside this program\n"
    "  --registered          no library: what the class is registered for\n"
    "  --class sfx|mfx|efx   stream effect (the default), mode effect, endpoint effect\n"
    "  --endpoint ID         the endpoint's identifier; else there is none\n"
    "  --generation 2|3      of the record that the object is initialised with; 2\n"
    "  --rate N              frames per second, 48000\n"
    "  --in-channels N       1 to 8, 2\n"
    "  --out-channels N      1 to 8, 2\n"
    "  --frames N            length of the sound, 48000\n"
    "  --buffer N            frames in one buffer, 480\n"
    "  --sound sine|impulse  a sine on each channel (the default), or one frame of full scale\n";

namespace {

constexpr std::uint32_t mostFrames = 100'000'000;
constexpr std::uint32_t mostBufferFrames = 1'000'000;
constexpr std::uint32_t highestRate = 384'000;
constexpr std::uint32_t mostChannels = 8;

std::uint32_t parseNumber(const std::string& option, std::string_view text, std::uint32_t highest) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < 1 || number > highest) {
        throw HostError(option + " takes 1 to " + std::to_string(highest) + ", not '" + std::string(text) +
                        "'");
    }
    return number;
}

template <class Value>
struct Choice {
    std::string_view name;
    Value value;
};

template <class Value, std::size_t count>
Value parseChoice(const std::string& option, std::string_view text, const Choice<Value> (&choices)[count]) {
    const auto* const found = std::ranges::find(choices, text, &Choice<Value>::name);
    if (found == std::end(choices)) {
        throw HostError(option + " doesn't take '" + std::string(text) + "'");
    }
    return found->value;
}

constexpr Choice<const apo::EffectClass*> classes[] = {
    {"sfx", &apo::streamEffect}, {"mfx", &apo::modeEffect}, {"efx", &apo::endpointEffect}};
constexpr Choice<Generation> generations[] = {{"2", Generation::second}, {"3", Generation::third}};
constexpr Choice<TestSound> sounds[] = {{"sine", TestSound::sine}, {"impulse", TestSound::impulse}};

/// Takes an option with its value; false for one that there isn't.
bool take(HostOptions& options, const std::string& option, const std::string& value) {
    if (option == "--library") {
        options.library = std::filesystem::absolute(value);
    } else if (option == "--class") {
        options.effect = parseChoice(option, value, classes);
    } else if (option == "--endpoint") {
        options.endpoint = value;
    } else if (option == "--generation") {
        options.generation = parseChoice(option, value, generations);
    } else if (option == "--rate") {
        options.sampleRate = parseNumber(option, value, highestRate);
    } else if (option == "--in-channels") {
        options.inChannels = parseNumber(option, value, mostChannels);
    } else if (option == "--out-channels") {
        options.outChannels = parseNumber(option, value, mostChannels);
    } else if (option == "--frames") {
        options.frames = parseNumber(option, value, mostFrames);
    } else if (option == "--buffer") {
        options.bufferFrames = parseNumber(option, value, mostBufferFrames);
    } else if (option == "--sound") {
        options.sound = parseChoice(option, value, sounds);
    } else {
        return false;
    }
    return true;
}

}  // namespace

HostOptions parseHostLine(int count, const char* const* arguments) {
    HostOptions options{.library = ownAudioObjectLibrary()};
    for (int at = 1; at < count; ++at) {
        const std::string option = arguments[at];
        if (option == "--registered") {
            options.isRegistered = true;
        } else if (option == "--help") {
            options.wantsHelp = true;
        } else if (at + 1 == count || !take(options, option, arguments[at + 1])) {
            throw HostError("'" + option + "' is no option, or lacks its value; see korva_host --help");
        } else {
            ++at;
        }
    }
    return options;
}

}  // namespace korva::tool
