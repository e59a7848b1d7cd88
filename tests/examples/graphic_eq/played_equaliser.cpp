#include "tests/examples/graphic_eq/played_equaliser.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>

#include "tests/support/float_bits.h"

namespace korva::test {

Sound silence(std::size_t frames) {
    Sound sound;
    sound.fill(std::vector<float>(frames));
    return sound;
}

Sound noise(std::size_t frames) {
    // Not a distribution of the library's: those differ between systems.
    std::mt19937 random(1);
    Sound sound = silence(frames);
    for (std::vector<float>& plane : sound) {
        for (float& sample : plane) {
            sample = static_cast<float>(random()) * 0x1p-32f - 0.5f;
        }
    }
    return sound;
}

void expectSameBits(const Sound& actual, const Sound& expected) {
    for (std::size_t plane = 0; plane < actual.size(); ++plane) {
        EXPECT_TRUE(sameBits(actual[plane], expected[plane])) << "plane " << plane;
    }
}

EngineFormat formatOf(std::int32_t channels, std::uint32_t sampleRate) {
    switch (channels) {
        case 2:
            return {0x3, 2, sampleRate, {0, 1}, {1, 2}};
        case 6:
            return {0x3F, 6, sampleRate, {0, 1, 2, 3, 4, 5}, {1, 2, 3, 4, 5, 6}};
        case 8:
            return {0x63F, 8, sampleRate, {0, 1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 10, 11}};
        default:
            throw std::invalid_argument("no such layout");
    }
}

std::vector<std::string> equaliserFiles() {
    return {KORVA_EQUALISER, KORVA_EQUALISER_BASELINE};
}

PlayedEqualiser::PlayedEqualiser(const std::string& file, std::uint32_t sampleRate)
    : library(file), instance(library.function<decltype(ZRDSPAPI_Create)>("ZRDSPAPI_Create")("{}", 2)) {
    if (instance == nullptr) {
        throw std::runtime_error("no instance");
    }
    if (sampleRate != 0) {
        const EngineFormat format = formatOf(8, sampleRate);
        EXPECT_TRUE(initialize(format, format));
    }
}

PlayedEqualiser::~PlayedEqualiser() {
    uninitialize();
    library.function<decltype(ZRDSPAPI_Free)>("ZRDSPAPI_Free")(instance);
}

bool PlayedEqualiser::initialize(EngineFormat in, EngineFormat out) {
    uninitialize();
    isActive = true;
    EngineFormat capture{};
    const auto function = library.function<decltype(ZRDSPAPI_Initialize)>("ZRDSPAPI_Initialize");
    return function(instance, &in, &out, &capture) != 0;
}

void PlayedEqualiser::uninitialize() {
    if (isActive) {
        library.function<decltype(ZRDSPAPI_Uninitialize)>("ZRDSPAPI_Uninitialize")(instance);
        isActive = false;
    }
}

void PlayedEqualiser::clear() {
    library.function<decltype(ZRDSPAPI_Clear)>("ZRDSPAPI_Clear")(instance, -1);
}

void PlayedEqualiser::set(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) {
    const auto function = library.function<decltype(ZRDSPAPI_SetParameter)>("ZRDSPAPI_SetParameter");
    function(instance, bank, id, -1, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

void PlayedEqualiser::setAllGains(float db) {
    BandValues gains;
    gains.fill(db);
    setGains(gains);
}

void PlayedEqualiser::setSwitch(std::int32_t bank, std::int32_t id, bool on) {
    const std::byte byte{on};
    set(bank, id, std::span(&byte, 1));
}

std::uint32_t PlayedEqualiser::exchange(std::int32_t id, std::span<const std::byte> in,
                                        std::span<std::byte> out, std::int32_t bank) {
    const auto function = library.function<decltype(ZRDSPAPI_SetGetData)>("ZRDSPAPI_SetGetData");
    return function(instance, bank, id, in.data(), static_cast<std::uint32_t>(in.size()), out.data(),
                    static_cast<std::uint32_t>(out.size()));
}

std::uint32_t PlayedEqualiser::testInput(EngineFormat& requested, EngineFormat opposite) {
    using Test = decltype(ZRDSPAPI_IsInputFormatSupported);
    return library.function<Test>("ZRDSPAPI_IsInputFormatSupported")(instance, &requested, &opposite);
}

std::uint32_t PlayedEqualiser::testOutput(EngineFormat& requested, EngineFormat opposite) {
    using Test = decltype(ZRDSPAPI_IsOutputFormatSupported);
    return library.function<Test>("ZRDSPAPI_IsOutputFormatSupported")(instance, &requested, &opposite);
}

void PlayedEqualiser::play(Sound& sound, const std::vector<std::uint32_t>& blockFrames) {
    struct alignas(64) Plane {
        std::array<float, KORVA_BLOCK_FRAMES> samples;
    };
    std::vector<Plane> planes(KORVA_PLANES);
    std::array<float*, KORVA_PLANES> pointers;
    std::transform(planes.begin(), planes.end(), pointers.begin(),
                   [](Plane& plane) { return plane.samples.data(); });
    const std::size_t frames = sound[0].size();
    std::size_t begin = 0;
    for (std::size_t turn = 0; begin < frames; ++turn) {
        const std::size_t count =
            std::min<std::size_t>(blockFrames[turn % blockFrames.size()], frames - begin);
        for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
            planes[plane].samples.fill(std::numeric_limits<float>::quiet_NaN());
            std::copy_n(sound[plane].begin() + static_cast<std::ptrdiff_t>(begin), count, pointers[plane]);
        }
        DspBlock block{
            pointers.data(), KORVA_PLANES, KORVA_BLOCK_FRAMES, 8, 8, static_cast<std::uint32_t>(count), 0};
        process(block);
        for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
            std::copy_n(pointers[plane], count, sound[plane].begin() + static_cast<std::ptrdiff_t>(begin));
        }
        begin += count;
    }
}

}  // namespace korva::test
