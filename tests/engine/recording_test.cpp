// The module that records calls does so, as the other tests rely on it.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "korva/dsp_module.h"
#include "tests/engine/planes.h"
#include "tests/support/loaded_library.h"
#include "tests/support/recorded_calls.h"

namespace korva::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// An instance of a copy of the recording module, driven by hand.
class Instance {
public:
    explicit Instance(const std::filesystem::path& file) : library(file.string()) {
        const std::string text = "{}";
        instance = function<decltype(ZRDSPAPI_Create)>("Create")(text.data(), 2);
    }
    ~Instance() {
        if (instance != nullptr) {
            function<decltype(ZRDSPAPI_Free)>("Free")(instance);
        }
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    template <class Function>
    [[nodiscard]] Function* function(const std::string& name) const {
        return library.function<Function>("ZRDSPAPI_" + name);
    }

    void setParameter(int id, const void* data, std::uint32_t size) const {
        function<decltype(ZRDSPAPI_SetParameter)>("SetParameter")(instance, -1, id, -1, data, size);
    }

    [[nodiscard]] std::uint32_t getData(int id, Bytes& out) const {
        const auto call = function<decltype(ZRDSPAPI_SetGetData)>("SetGetData");
        return call(instance, -1, id, nullptr, 0, out.data(), static_cast<std::uint32_t>(out.size()));
    }

    DspInstance* instance = nullptr;

private:
    LoadedLibrary library;
};

std::filesystem::path copyIn(const OwnFolder& folder, const std::string& name) {
    return folder.putLibrary(KORVA_RECORDER_MODULE, name);
}

TEST(Recording, OutlivesTheLibraryAndTellsWhenItCameAndWent) {
    const OwnFolder folder;
    const Recording recording;

    { const Instance instance(copyIn(folder, "TANMER64")); }

    EXPECT_EQ(functionsOf(recording.calls()), (std::vector<std::string>{"Load", "Create", "Free", "Unload"}));
}

TEST(Recording, TellsModuleInstanceThreadAndTimeOfACall) {
    const OwnFolder folder;
    const Recording recording;
    const Instance instance(copyIn(folder, "PELLUX64"));
    std::thread([&] { instance.setParameter(3, "x", 1); }).join();

    const auto calls = recording.calls();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[1].module, "PELLUX64");
    EXPECT_EQ(calls[1].instance, 1);
    EXPECT_EQ(calls[2].instance, 1);
    EXPECT_NE(calls[2].thread, calls[1].thread);
    EXPECT_EQ(calls[2].process, calls[1].process);
    EXPECT_GE(calls[2].beginNs, calls[1].endNs);
    EXPECT_GE(calls[2].endNs, calls[2].beginNs);
}

TEST(Recording, KeepsBytesAndTellsNullFromEmpty) {
    const OwnFolder folder;
    const Recording recording;
    const Instance instance(copyIn(folder, "recorder"));
    const Bytes bytes = {0x00, 0x7F, 0x80, 0xFF};
    instance.setParameter(1, bytes.data(), 4);
    instance.setParameter(2, bytes.data(), 0);
    instance.setParameter(3, nullptr, 0);

    const auto calls = callsOf("SetParameter", recording.calls());
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].bytes("data"), bytes);
    EXPECT_EQ(calls[1].bytes("data"), Bytes());
    EXPECT_EQ(calls[2].bytes("data"), std::nullopt);
    EXPECT_EQ(calls[2].number("id"), 3);
}

TEST(Recording, NumbersInstancesAnewThoughTheirAddressComesBack) {
    const OwnFolder folder;
    const Recording recording;
    const auto file = copyIn(folder, "recorder");
    { const Instance first(file); }
    { const Instance second(file); }
    const Instance third(file);
    const Instance fourth(file);

    std::set<int> numbers;
    for (const RecordedCall& call : callsOf("Create", recording.calls())) {
        numbers.insert(call.instance);
    }
    EXPECT_EQ(numbers, (std::set<int>{1, 2, 3, 4}));
}

TEST(Recording, LosesNothingOfSeveralThreadsAndCopies) {
    constexpr int callsEach = 50;
    const OwnFolder folder;
    const Recording recording;
    const Instance one(copyIn(folder, "one"));
    const Instance two(copyIn(folder, "two"));
    const auto callOften = [](const Instance& instance, int id) {
        for (int round = 0; round < callsEach; ++round) {
            instance.setParameter(id, "text", 4);
        }
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id) {
        threads.emplace_back([&, id] { callOften(id % 2 == 0 ? one : two, id); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::map<std::int64_t, int> counts;
    for (const RecordedCall& call : callsOf("SetParameter", recording.calls())) {
        ++counts[call.number("id")];
    }
    EXPECT_EQ(counts,
              (std::map<std::int64_t, int>{{0, callsEach}, {1, callsEach}, {2, callsEach}, {3, callsEach}}));
}

TEST(Recording, IsMadeOnlyWhileAsked) {
    const OwnFolder folder;
    std::filesystem::path log;
    { log = Recording().log(); }
    { const Instance instance(copyIn(folder, "recorder")); }

    EXPECT_FALSE(std::filesystem::exists(log));
    EXPECT_TRUE(readRecordedCalls(log).empty());
}

TEST(Recording, HasTheBlockAsItCameAndTheModuleHalvesIt) {
    const OwnFolder folder;
    Recording recording;
    recording.noteSamples(3);
    const Instance instance(copyIn(folder, "recorder"));
    Planes planes(1.0F);
    planes.samples[5][2] = -2.0F;
    DspBlock block = planes.block<DspBlock>(100);
    instance.instance->table->process(instance.instance, &block);

    const auto calls = callsOf("process", recording.calls());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].plane(5), (std::vector<float>{1.0F, 1.0F, -2.0F}));
    EXPECT_EQ(calls[0].bytes("block"), (Bytes{8, 0, 0, 0, 0,   2, 0, 0, 2, 0, 0, 0,  //
                                              6, 0, 0, 0, 100, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(calls[0].text("digest0"), calls[0].text("digest7"));
    EXPECT_NE(calls[0].text("digest0"), calls[0].text("digest5"));
    EXPECT_EQ(planes.samples[5][2], -1.0F);
    EXPECT_EQ(planes.samples[7][99], 0.5F);
    EXPECT_EQ(planes.samples[7][100], 1.0F);
}

TEST(Recording, AnswersAsToldAtEachCall) {
    const OwnFolder folder;
    Recording recording("hardware=1,data:-1:-32=0a0b,count:-1:-33=7");
    const Instance instance(copyIn(folder, "recorder"));
    const auto isAvailable = [&] { return instance.instance->table->isHardwareAvailable(instance.instance); };
    Bytes out = {0, 0, 0, 0};

    EXPECT_EQ(isAvailable(), 1U);
    EXPECT_EQ(instance.getData(-32, out), 2U);
    EXPECT_EQ(out, (Bytes{10, 11, 0, 0}));
    EXPECT_EQ(instance.getData(-33, out), 7U);
    EXPECT_EQ(instance.getData(-34, out), 0U);

    recording.answer("hardware=0x100");
    EXPECT_EQ(isAvailable(), 0x100U);
    EXPECT_EQ(instance.getData(-32, out), 0U);
}

TEST(Recording, AnswersOneCopyOtherwiseThanTheRest) {
    const OwnFolder folder;
    const Recording recording("DRIVOL64.create=null");

    EXPECT_EQ(Instance(copyIn(folder, "DRIVOL64")).instance, nullptr);
    EXPECT_NE(Instance(copyIn(folder, "TANMER64")).instance, nullptr);
}

TEST(Recording, WritesTheFormatThatItIsTold) {
    const OwnFolder folder;
    const Recording recording("inputFormat=1,inputFormatBytes=3f060000080000");
    const Instance instance(copyIn(folder, "recorder"));
    EngineFormat requested{0x3, 0x2000002, 48000, {}, {}};
    EngineFormat opposite{};

    const auto test = instance.function<decltype(ZRDSPAPI_IsInputFormatSupported)>("IsInputFormatSupported");
    EXPECT_EQ(test(instance.instance, &requested, &opposite), 1U);

    EXPECT_EQ(requested.channelMask, 0x63FU);
    EXPECT_EQ(requested.channelCount, 0x2000008);
    EXPECT_EQ(requested.sampleRate, 48000U);
}

}  // namespace
}  // namespace korva::test
