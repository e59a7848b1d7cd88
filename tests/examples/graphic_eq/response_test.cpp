// What the equaliser does to each frequency, beside what a bell is defined to do.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <string>
#include <tuple>
#include <vector>

#include "tests/examples/graphic_eq/played_equaliser.h"

namespace korva::test {
namespace {

constexpr double pi = std::numbers::pi;

struct Setting {
    const char* name;
    BandValues gainDb;
    BandValues centreHz;
    float outputDb;
};

const Setting settings[] = {
    {"Smile", {9, 6, 3, 0, -2, -4, -4, -2, 0, 3, 6, 9}, {}, -6},
    {"Comb", {12, -12, 12, -12, 12, -12, 12, -12, 12, -12, 12, -12}, {}, 0},
    {"MovedToTheEnds",
     {24, 0, 0, -24, 0, 0, 0, 0, 24, 0, 0, -24},
     {20, 0, 0, 200, 0, 0, 0, 0, 3000, 0, 0, 3400},
     3},
};

constexpr BandValues standardHz{31.5f, 56, 100, 180, 315, 560, 1000, 1800, 3150, 5600, 10000, 18000};

/// The cookbook's alpha of a bell whose lower point of half the gain lies an eighth of a decade below its
/// centre. The bilinear transform takes a frequency to the tangent of half its angle.
double alphaOf(double centreHz, double rate) {
    const auto analog = [rate](double hz) { return std::tan(pi * hz / rate); };
    const double centre = analog(centreHz);
    const double lower = analog(centreHz * std::pow(10.0, -0.125));
    const double upper = centre * centre / lower;
    const double quality = centre / (upper - lower);
    return std::sin(2 * pi * centreHz / rate) / (2 * quality);
}

/// The peaking filter of the Audio EQ Cookbook (R. Bristow-Johnson) at a frequency, straight from its
/// coefficients, in 64 bits.
std::complex<double> bell(double gainDb, double centreHz, double hz, double rate) {
    const double amplitude = std::pow(10.0, gainDb / 40);
    const double angle = 2 * pi * centreHz / rate;
    const double alpha = alphaOf(centreHz, rate);
    const std::complex<double> z1 = std::polar(1.0, -2 * pi * hz / rate);
    const std::complex<double> z2 = z1 * z1;
    const std::complex<double> above =
        1 + alpha * amplitude - 2 * std::cos(angle) * z1 + (1 - alpha * amplitude) * z2;
    const std::complex<double> below =
        1 + alpha / amplitude - 2 * std::cos(angle) * z1 + (1 - alpha / amplitude) * z2;
    return above / below;
}

double expectedDb(const Setting& setting, double hz, double rate) {
    double db = setting.outputDb;
    for (std::size_t i = 0; i < equaliserBands; ++i) {
        const double centre = setting.centreHz[i] == 0 ? standardHz[i] : setting.centreHz[i];
        if (centre <= 0.45 * rate) {
            db += 20 * std::log10(std::abs(bell(setting.gainDb[i], centre, hz, rate)));
        }
    }
    return db;
}

/// Level of a sound at a frequency: one line of its Fourier transform.
double levelDb(const std::vector<float>& sound, double hz, double rate) {
    const std::complex<double> turn = std::polar(1.0, -2 * pi * hz / rate);
    std::complex<double> sum = 0;
    for (std::size_t i = sound.size(); i-- > 0;) {
        sum = sum * turn + static_cast<double>(sound[i]);
    }
    return 20 * std::log10(std::abs(sum));
}

using Case = std::tuple<std::string, std::uint32_t>;
class FrequencyResponse : public testing::TestWithParam<Case> {};
INSTANTIATE_TEST_SUITE_P(AtEachRate, FrequencyResponse,
                         testing::Combine(testing::ValuesIn(equaliserFiles()),
                                          testing::Values(8000u, 44100u, 48000u, 192000u, 384000u)),
                         [](const auto& parameter) {
                             const bool isBaseline = std::get<0>(parameter.param) == equaliserFiles().back();
                             return std::string(isBaseline ? "Baseline" : "Fastest") +
                                    std::to_string(std::get<1>(parameter.param));
                         });

TEST_P(FrequencyResponse, IsThatOfItsBellsToATwentiethOfADecibel) {
    const auto& [file, rate] = GetParam();
    PlayedEqualiser equaliser(file, rate);
    for (const Setting& setting : settings) {
        equaliser.clear();
        equaliser.setGains(setting.gainDb);
        equaliser.setCentres(setting.centreHz);
        equaliser.setOutputGain(setting.outputDb);
        Sound sound = silence(rate);
        sound[KORVA_SIDE_RIGHT][0] = 1;
        equaliser.play(sound);
        double worst = 0;
        for (double hz = 10; hz < 0.49 * rate; hz *= 1.3) {
            const double measured = levelDb(sound[KORVA_SIDE_RIGHT], hz, rate);
            const double expected = expectedDb(setting, hz, rate);
            worst = std::max(worst, std::abs(measured - expected));
            EXPECT_NEAR(measured, expected, 0.05) << setting.name << " at " << hz << " Hz";
        }
        RecordProperty(setting.name, std::to_string(worst));
    }
}

double gainDbOf(const std::string& file, std::uint32_t rate, std::size_t band, float gainDb, double hz) {
    PlayedEqualiser equaliser(file, rate);
    BandValues gains{};
    gains[band] = gainDb;
    equaliser.setGains(gains);
    Sound sound = silence(rate / 2);
    sound[0][0] = 1;
    equaliser.play(sound);
    return levelDb(sound[0], hz, rate);
}

TEST(EqualiserBand, HasItsGainAtItsCentreAndHalfOfItHalfwayToTheNextLowerOne) {
    const std::string file = equaliserFiles().front();
    for (const std::uint32_t rate : {44100u, 192000u}) {
        for (std::size_t band = 0; band < equaliserBands; ++band) {
            for (const float gainDb : {9.0f, -9.0f}) {
                SCOPED_TRACE(std::to_string(rate) + " Hz, band " + std::to_string(band));
                EXPECT_NEAR(gainDbOf(file, rate, band, gainDb, standardHz[band]), gainDb, 0.05);
                const double halfway = standardHz[band] * std::pow(10.0, -0.125);
                EXPECT_NEAR(gainDbOf(file, rate, band, gainDb, halfway), gainDb / 2, 0.05);
            }
        }
    }
}

}  // namespace
}  // namespace korva::test
