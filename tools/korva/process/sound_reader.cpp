#include "korva/process/sound_reader.h"
#include "korva/process/muted_standard_error.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <vector>

#include "korva/errors.h"
#include "korva/process/channel_order.h"
#include "korva/process/input_file.h"
#include "korva/process/truncation.h"

namespace korva::tool {
namespace {

constexpr std::size_t blockFrames = 8192;

struct Closer {
    void operator()(SNDFILE* sound) const { sf_close(sound); }
};
using Sound = std::unique_ptr<SNDFILE, Closer>;

std::string nameOf(int format, int mask) {
    SF_FORMAT_INFO info{};
    info.format = format & mask;
    const bool known = sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof(info)) == 0;
    return known ? info.name : "unknown";
}

std::string logOf(SNDFILE* sound) {
    std::vector<char> log(1 << 16);
    sf_command(sound, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    return log.data();
}

ChannelOrder channelOrderOf(SNDFILE* sound, const SF_INFO& info) {
    const auto channels = static_cast<std::uint32_t>(info.channels);
    if (const auto fixed = fixedSpeakers(info.format, channels); !fixed.empty()) {
        return orderFromFile(fixed);
    }
    std::vector<int> positions(channels);
    const auto bytes = static_cast<int>(positions.size() * sizeof(int));
    if (sf_command(sound, SFC_GET_CHANNEL_MAP_INFO, positions.data(), bytes) != SF_TRUE) {
        return {};
    }
    std::vector<std::uint32_t> speakers(channels);
    std::ranges::transform(positions, speakers.begin(), speakerOfPosition);
    return orderFromFile(speakers);
}

bool isOgg(const SF_INFO& info) {
    return (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_OGG;
}

bool isMpeg(const SF_INFO& info) {
    return (info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG;
}

}  // namespace

struct SoundReader::Source {
    explicit Source(const std::string& inputPath) : path(inputPath), file(inputPath) {}

    void open();
    void checkHeader() const;
    void refill();
    void checkEnd() const;
    std::uint32_t take(float* samples, std::uint32_t count);

    std::string path;
    InputFile file;
    SF_INFO info{};
    Sound sound;  // after the file, whose descriptor it uses until it is closed
    SoundFormat format{};
    ChannelOrder order;
    std::string kind;
    std::vector<float> block;    ///< blockFrames x channels, in the file's order.
    std::size_t blockFill = 0;   ///< Frames in the block.
    std::size_t blockTaken = 0;  ///< Of those, frames handed out.
    std::uint64_t framesRead = 0;
    bool atEnd = false;
};

void SoundReader::Source::open() {
    {
        const MutedStandardError muted;
        sound.reset(sf_open_fd(file.descriptor(), SFM_READ, &info, SF_FALSE));
    }
    if (sound == nullptr) {
        fail("cannot read '{}' as a sound file: {}", path, sf_strerror(nullptr));
    }
    checkHeader();
    order = channelOrderOf(sound.get(), info);
    format = {static_cast<std::uint32_t>(info.samplerate), static_cast<std::uint32_t>(info.channels),
              order.mask};
    kind = nameOf(info.format, SF_FORMAT_TYPEMASK) + ", " + nameOf(info.format, SF_FORMAT_SUBMASK);
    block.resize(blockFrames * format.channels);
}

void SoundReader::Source::checkHeader() const {
    if (info.channels < 1 || info.channels > static_cast<int>(rt::planeCount)) {
        fail("'{}' has {} channels; 1 to {} can be processed", path, info.channels, rt::planeCount);
    }
    if (info.samplerate < 1) {
        fail("'{}' has a sampling rate of {} Hz", path, info.samplerate);
    }
    if (const auto shortfall = findShortfall(logOf(sound.get()), static_cast<std::uint64_t>(info.frames))) {
        fail("'{}' is truncated: it announces {} bytes of sound and has {}", path, shortfall->announcedBytes,
             shortfall->presentBytes);
    }
    // An Ogg stream's length stands in its last page.
    if (isOgg(info) && info.frames == SF_COUNT_MAX) {
        fail("'{}' is truncated: the end of the stream is missing", path);
    }
    if (info.frames == 0) {
        fail("'{}' holds no frames", path);
    }
}

void SoundReader::Source::refill() {
    std::optional<MutedStandardError> muted;
    if (isMpeg(info)) {
        muted.emplace();  // its decoder remarks on every fault
    }
    blockFill = static_cast<std::size_t>(
        sf_readf_float(sound.get(), block.data(), static_cast<sf_count_t>(blockFrames)));
    muted.reset();
    blockTaken = 0;
    framesRead += blockFill;
    if (blockFill < blockFrames) {
        atEnd = true;
        checkEnd();
    }
}

void SoundReader::Source::checkEnd() const {
    const int error = sf_error(sound.get());
    if (error == SF_ERR_SYSTEM) {
        fail("cannot read '{}' after frame {}: {}", path, framesRead, sf_strerror(sound.get()));
    }
    // A decoder may tell of lost sound in its log only.
    if (error != SF_ERR_NO_ERROR || logOf(sound.get()).find("DECODER_ERROR_STATUS") != std::string::npos) {
        fail("'{}' is truncated or damaged after frame {}", path, framesRead);
    }
    if (info.frames == SF_COUNT_MAX) {
        return;
    }
    // An MPEG stream without a header of its own has only an estimated length.
    const auto announced = static_cast<std::uint64_t>(info.frames);
    const std::uint64_t certain = isMpeg(info) ? announced - announced / 50 : announced;
    if (framesRead < certain) {
        fail("'{}' is truncated or damaged: it announces {} frames, and {} can be read", path, announced,
             framesRead);
    }
}

std::uint32_t SoundReader::Source::take(float* samples, std::uint32_t count) {
    if (blockTaken == blockFill && !atEnd) {
        refill();
    }
    const std::size_t channels = format.channels;
    const std::size_t frames = std::min<std::size_t>(count, blockFill - blockTaken);
    const float* from = block.data() + blockTaken * channels;
    for (std::size_t frame = 0; frame < frames; ++frame, from += channels) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            *samples++ = from[order.fileChannel[channel]];
        }
    }
    blockTaken += frames;
    return static_cast<std::uint32_t>(frames);
}

SoundReader::SoundReader(const std::string& path) : source(std::make_unique<Source>(path)) {
    source->open();
}

SoundReader::~SoundReader() = default;

const SoundFormat& SoundReader::format() const {
    return source->format;
}

std::optional<std::uint64_t> SoundReader::frames() const {
    const auto frames = source->info.frames;
    return frames == SF_COUNT_MAX ? std::nullopt : std::optional(static_cast<std::uint64_t>(frames));
}

const std::string& SoundReader::kind() const {
    return source->kind;
}

std::uint32_t SoundReader::read(float* samples, std::uint32_t count) {
    std::uint32_t done = 0;
    while (done < count) {
        const std::uint32_t taken =
            source->take(samples + std::size_t{done} * source->format.channels, count - done);
        if (taken == 0) {
            break;
        }
        done += taken;
    }
    return done;
}

}  // namespace korva::tool
