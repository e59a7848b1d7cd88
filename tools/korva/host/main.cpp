// korva_host: an audio engine that needs nothing but the object. It ends with 0 when the sound came through,
// and with 2 and one line on standard error when it didn't.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "korva/host/audio_object_library.h"
#include "korva/host/host_error.h"
#include "korva/host/host_line.h"
#include "korva/host/test_sound.h"
#include "platform/class_activation.h"
#include "platform/com_apartment.h"
#include "platform/property_key.h"
#include "rt/speakers.h"

namespace {

using namespace korva::tool;
using korva::platform::Reference;

constexpr int failed = 2;

SoundFormat formatOf(const HostOptions& options, std::uint32_t channels) {
    return {options.sampleRate, channels, korva::rt::defaultSpeakerMask(static_cast<std::int32_t>(channels))};
}

Reference<IUnknown> createRegistered(const CLSID& classId) {
    void* object = nullptr;
    throwIfFailed(korva::platform::createObjectOfClass(classId, korva::published::iidOf<IUnknown>, &object),
                  "there is no object of the class " + korva::platform::guidText(classId));
    return Reference<IUnknown>(static_cast<IUnknown*>(object));
}

void printLevels(const char* side, const std::vector<float>& levels) {
    std::printf("%s", side);
    for (const float level : levels) {
        std::printf(" %.6f", static_cast<double>(level));
    }
    std::printf("\n");
}

void play(const HostOptions& options, AudioObject& object) {
    const SoundFormat in = formatOf(options, options.inChannels);
    const SoundFormat out = formatOf(options, options.outChannels);
    EngineBuffers buffers(in, out, options.bufferFrames);
    object.lock(buffers);
    std::vector<float> inputLevels(in.channels);
    std::vector<float> outputLevels(out.channels);
    std::uint32_t bufferCount = 0;
    for (std::uint32_t done = 0; done < options.frames; ++bufferCount) {
        const std::uint32_t count = std::min(options.bufferFrames, options.frames - done);
        fillWith(options.sound, in, done, buffers.input().first(std::size_t{count} * in.channels));
        raiseLevels(inputLevels, buffers.input(count));
        object.process(buffers, count);
        raiseLevels(outputLevels, buffers.output(count));
        done += count;
    }
    object.unlock();
    std::printf("played %u frames in %u buffers\n", options.frames, bufferCount);
    printLevels("input", inputLevels);
    printLevels("output", outputLevels);
}

void runObject(const HostOptions& options, const Reference<IUnknown>& made) {
    const CLSID& classId = options.effect->record.clsid;
    AudioObject object(made);
    const Reference<IMMDevice> endpoint = options.endpoint.empty() ? nullptr : findEndpoint(options.endpoint);
    if (!options.endpoint.empty() && !endpoint) {
        throw HostError("there is no endpoint '" + options.endpoint + "'");
    }
    object.initialize(classId, options.generation, endpoint.get());
    std::printf("class %s\n", korva::platform::guidText(classId).c_str());
    play(options, object);
}

void run(const HostOptions& options) {
    const korva::platform::ComApartment apartment;
    const CLSID& classId = options.effect->record.clsid;
    if (options.isRegistered) {
        runObject(options, createRegistered(classId));
        return;
    }
    const AudioObjectLibrary library(options.library);
    runObject(options, library.createObject(classId));
    std::printf("library %s\n", library.canUnload() ? "can be unloaded" : "is still in use");
}

}  // namespace

int main(int count, char** arguments) {
    try {
        const HostOptions options = parseHostLine(count, arguments);
        if (options.wantsHelp) {
            std::fputs(hostUsage, stdout);
        } else {
            run(options);
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korva_host: error: %s\n", error.what());
    }
    return failed;
}
