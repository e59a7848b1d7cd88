// What an engine's operations bring to its module, and back.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/dsp_engine.h"
#include "tests/engine/planes.h"
#include "tests/engine/recorded_engine.h"
#include "tests/support/recorded_calls.h"

namespace korva::engine {
namespace {

using test::Bytes;
using test::bytesOf;
using test::digitsOf;
using test::Planes;
using test::RecordedCall;
using test::RecordedEngine;
using test::Recording;

rt::EngineFormat formatOf(std::int32_t channels, std::uint32_t rate = 48000) {
    rt::EngineFormat format;
    format.Assign(rate, channels, 0);
    return format;
}

TEST(DspEngineCalls, BringFormatsAsTheirBytesAndResultsBack) {
    const RecordedEngine engine("inputFormat=2,outputFormat=5,captureFormat=0x80000000");
    rt::EngineFormat two = formatOf(2);
    rt::EngineFormat eight = formatOf(8, 96000);

    EXPECT_EQ(engine->IsInputFormatSupported(two, eight), 2U);
    EXPECT_EQ(engine->IsOutputFormatSupported(eight, two), 5U);
    EXPECT_EQ(engine->IsCaptureFormatSupported(two), 0x80000000U);

    const RecordedCall input = engine.onlyCall("IsInputFormatSupported");
    EXPECT_EQ(input.bytes("requested"), bytesOf(two));
    EXPECT_EQ(input.bytes("opposite"), bytesOf(eight));
    const RecordedCall output = engine.onlyCall("IsOutputFormatSupported");
    EXPECT_EQ(output.bytes("requested"), bytesOf(eight));
    EXPECT_EQ(output.bytes("opposite"), bytesOf(two));
    EXPECT_EQ(engine.onlyCall("IsCaptureFormatSupported").bytes("requested"), bytesOf(two));
}

TEST(DspEngineCalls, BringBackWhatAFormatTestWrites) {
    const rt::EngineFormat other = formatOf(6, 44100);
    const std::string digits = digitsOf(bytesOf(other));
    const RecordedEngine engine("inputFormat=1,outputFormat=1,captureFormat=1,inputFormatBytes=" + digits +
                                ",outputFormatBytes=" + digits + ",captureFormatBytes=" + digits);
    rt::EngineFormat input = formatOf(2);
    rt::EngineFormat output = formatOf(2);
    rt::EngineFormat capture = formatOf(2);
    rt::EngineFormat opposite = formatOf(8);

    EXPECT_EQ(engine->IsInputFormatSupported(input, opposite), 1U);
    EXPECT_EQ(engine->IsOutputFormatSupported(output, opposite), 1U);
    EXPECT_EQ(engine->IsCaptureFormatSupported(capture), 1U);

    EXPECT_EQ(input, other);
    EXPECT_EQ(output, other);
    EXPECT_EQ(capture, other);
    EXPECT_EQ(opposite, formatOf(8));
}

TEST(DspEngineCalls, BringThreeFormatsToInitialize) {
    const RecordedEngine engine;
    rt::EngineFormat in = formatOf(2);
    rt::EngineFormat out = formatOf(8);
    rt::EngineFormat capture;

    EXPECT_TRUE(engine->Initialize(in, out, capture));

    const RecordedCall call = engine.onlyCall("Initialize");
    EXPECT_EQ(call.bytes("in"), bytesOf(in));
    EXPECT_EQ(call.bytes("out"), bytesOf(out));
    EXPECT_EQ(call.bytes("capture"), Bytes(28, 0));
}

TEST(DspEngineCalls, TakeAnyNumberButZeroForSuccessOfInitialize) {
    const RecordedEngine engine("initialize=0");
    rt::EngineFormat format;
    EXPECT_FALSE(engine->Initialize(format, format, format));

    for (const char* answers : {"initialize=1", "initialize=2", "initialize=0x80", "initialize=255"}) {
        const Recording other(answers);
        EXPECT_TRUE(engine->Initialize(format, format, format)) << answers;
    }
}

TEST(DspEngineCalls, WithoutArgumentsReachTheModule) {
    const RecordedEngine engine;
    engine->WakeUp();
    engine->Uninitialize();
    engine->Clear(-1);
    engine->Clear(0x7FFFFFFF);
    engine->SetInputGain(-0.25F);

    EXPECT_EQ(engine.onlyCall("WakeUp").instance, 1);
    EXPECT_EQ(engine.onlyCall("Uninitialize").instance, 1);
    EXPECT_EQ(engine.onlyCall("SetInputGain").bytes("gain"), (Bytes{0, 0, 0x80, 0xBE}));
    const auto clears = engine.calls("Clear");
    ASSERT_EQ(clears.size(), 2U);
    EXPECT_EQ(clears[0].number("which"), -1);
    EXPECT_EQ(clears[1].number("which"), 0x7FFFFFFF);
}

TEST(DspEngineCalls, AskTheInstanceForItsHardware) {
    RecordedEngine engine("hardware=0");
    EXPECT_FALSE(engine->isHardwareAvailable());
    engine.recording.answer("hardware=1");
    EXPECT_TRUE(engine->isHardwareAvailable());
    engine.recording.answer("hardware=0x80000000");
    EXPECT_TRUE(engine->isHardwareAvailable());

    EXPECT_EQ(engine.calls("isHardwareAvailable").size(), 3U);
}

TEST(DspEngineCalls, BringAParameterWithItsPlaceAndItsResultBack) {
    const RecordedEngine engine("parameter=17");
    const std::array bytes = {std::byte{1}, std::byte{0}, std::byte{0xFF}};

    EXPECT_EQ(engine->SetParameter(4, -2147483647, 3, bytes), 17U);

    const RecordedCall call = engine.onlyCall("SetParameter");
    EXPECT_EQ(call.number("bank"), 4);
    EXPECT_EQ(call.number("id"), -2147483647);
    EXPECT_EQ(call.number("index"), 3);
    EXPECT_EQ(call.number("size"), 3);
    EXPECT_EQ(call.bytes("data"), (Bytes{1, 0, 0xFF}));
}

template <class T>
Bytes sentBytes(T value) {
    const RecordedEngine engine;
    engine->SetParameter(-1, 1, -1, value);
    const RecordedCall call = engine.onlyCall("SetParameter");
    EXPECT_EQ(call.number("size"), static_cast<std::int64_t>(sizeof(T)));
    return call.bytes("data").value();
}

TEST(DspEngineCalls, BringAValueOfEachTypeAsItsBytes) {
    EXPECT_EQ(sentBytes(1.0), (Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
    EXPECT_EQ(sentBytes(1.0F), (Bytes{0, 0, 0x80, 0x3F}));
    EXPECT_EQ(sentBytes(true), Bytes{1});
    EXPECT_EQ(sentBytes(false), Bytes{0});
    EXPECT_EQ(sentBytes(std::int64_t{-2}), (Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(sentBytes(std::uint64_t{0x0102030405060708}), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(sentBytes(std::int32_t{-2}), (Bytes{0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(sentBytes(std::uint32_t{0x01020304}), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(sentBytes(std::int16_t{-2}), (Bytes{0xFE, 0xFF}));
    EXPECT_EQ(sentBytes(std::uint16_t{0x0102}), (Bytes{2, 1}));
    EXPECT_EQ(sentBytes(std::int8_t{-2}), Bytes{0xFE});
    EXPECT_EQ(sentBytes(std::uint8_t{0xFE}), Bytes{0xFE});
}

TEST(DspEngineCalls, BringEmptySidesAsNullWithoutSize) {
    const RecordedEngine engine;
    std::array<std::byte, 4> memory{};
    engine->SetParameter(-1, 1, -1, std::span<const std::byte>());
    engine->SetParameter(-1, 1, -1, std::span<const std::byte>(memory).first(0));
    EXPECT_EQ(engine->SetGetData(-1, 1, {}, {}), 0U);
    EXPECT_EQ(engine->SetGetData(-1, 1, std::span(memory).first(0), std::span(memory).last(0)), 0U);

    const auto parameters = engine.calls("SetParameter");
    ASSERT_EQ(parameters.size(), 2U);
    for (const RecordedCall& call : parameters) {
        EXPECT_EQ(call.bytes("data"), std::nullopt);
        EXPECT_EQ(call.number("size"), 0);
    }
    const auto data = engine.calls("SetGetData");
    ASSERT_EQ(data.size(), 2U);
    for (const RecordedCall& call : data) {
        EXPECT_EQ(call.bytes("in"), std::nullopt);
        EXPECT_EQ(call.number("inSize"), 0);
        EXPECT_EQ(call.number("outIsNull"), 1);
        EXPECT_EQ(call.number("outSize"), 0);
    }
}

TEST(DspEngineCalls, BringDataInAndOutWithTheModulesCount) {
    const RecordedEngine engine("data:-1:-39=0a0b0c0d0e,count:-1:-33=99");
    const std::array in = {std::byte{0}, std::byte{7}};
    std::array<std::byte, 4> out{};

    EXPECT_EQ(engine->SetGetData(-1, -39, in, out), 4U);
    EXPECT_EQ(out, (std::array{std::byte{10}, std::byte{11}, std::byte{12}, std::byte{13}}));
    EXPECT_EQ(engine->SetGetData(-1, -33, in, {}), 99U);
    EXPECT_EQ(engine->SetGetData(-1, -34, {}, out), 0U);

    const RecordedCall call = engine.calls("SetGetData").at(0);
    EXPECT_EQ(call.number("bank"), -1);
    EXPECT_EQ(call.number("id"), -39);
    EXPECT_EQ(call.bytes("in"), (Bytes{0, 7}));
    EXPECT_EQ(call.number("outSize"), 4);
    EXPECT_EQ(call.number("outIsNull"), 0);
}

TEST(DspEngineCalls, OfProcessGoThroughTheTableWithTheBlockAsItIs) {
    const RecordedEngine engine;
    const Planes planes(1.0F);
    auto block = planes.block<rt::DspBlock>(480);
    rt::BlockProcessor& processor = *engine.operator->();

    processor.Process(&block);

    const RecordedCall call = engine.onlyCall("process");
    EXPECT_EQ(call.instance, 1);
    EXPECT_EQ(call.bytes("block"), (Bytes{8, 0, 0, 0, 0,    2, 0, 0, 2, 0, 0, 0,  //
                                          6, 0, 0, 0, 0xE0, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(planes.samples[0][479], 0.5F);
    EXPECT_EQ(planes.samples[7][479], 0.5F);
    EXPECT_EQ(planes.samples[7][480], 1.0F);
    EXPECT_TRUE(engine.calls("Process").empty());
    EXPECT_TRUE(engine.calls("capture").empty());
}

TEST(DspEngineCalls, OfCaptureGoThroughTheTable) {
    const RecordedEngine engine;
    const Planes planes(1.0F);
    auto block = planes.block<rt::DspBlock>(1);

    engine->Capture(&block);

    EXPECT_EQ(engine.onlyCall("capture").plane(3), std::vector<float>{1.0F});
    EXPECT_TRUE(engine.calls("Capture").empty());
    EXPECT_TRUE(engine.calls("process").empty());
}

TEST(DspEngineCalls, ReachNoEntryOfTheTableBelowTheEleventh) {
    const RecordedEngine engine;
    rt::EngineFormat format;
    engine->Initialize(format, format, format);
    const Planes planes(0.0F);
    auto block = planes.block<rt::DspBlock>(512);
    engine->Process(&block);
    engine->Capture(&block);
    static_cast<void>(engine->isHardwareAvailable());
    engine->Uninitialize();

    EXPECT_TRUE(engine.calls("unused").empty());
}

}  // namespace
}  // namespace korva::engine
