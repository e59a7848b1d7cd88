#include "korva/process/sound_writer.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <filesystem>
#include <vector>

#include "korva/errors.h"
#include "korva/process/channel_order.h"
#include "korva/process/output_file.h"

namespace korva::tool {
namespace {

struct FileKind {
    std::string_view ending;
    int format;
    std::string_view name;
    bool holdsFloats;
    bool has32BitLengths;
};

constexpr std::array<FileKind, 13> fileKinds = {{
    {".wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, "WAV, 32-bit float", true, true},
    {".w64", SF_FORMAT_W64 | SF_FORMAT_FLOAT, "W64, 32-bit float", true, false},
    {".rf64", SF_FORMAT_RF64 | SF_FORMAT_FLOAT, "RF64, 32-bit float", true, false},
    {".aif", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, "AIFF, 32-bit float", true, true},
    {".aiff", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, "AIFF, 32-bit float", true, true},
    {".au", SF_FORMAT_AU | SF_FORMAT_FLOAT, "AU, 32-bit float", true, true},
    {".snd", SF_FORMAT_AU | SF_FORMAT_FLOAT, "AU, 32-bit float", true, true},
    {".caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT, "CAF, 32-bit float", true, false},
    {".flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, "FLAC, 24-bit", false, false},
    {".ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, "Ogg Vorbis", false, false},
    {".oga", SF_FORMAT_OGG | SF_FORMAT_VORBIS, "Ogg Vorbis", false, false},
    {".opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, "Ogg Opus", false, false},
    {".mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, "MP3", false, false},
}};

/// What fits beside a header in a file with 32-bit lengths.
constexpr std::uint64_t maxSoundBytes = 0xFFFFFFFF - 0x10000;

/// An encoder gets this much at once: some keep a whole call's frames on their stack.
constexpr std::uint32_t pieceFrames = 4096;

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; });
    return text;
}

const FileKind& kindOf(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    if (ending.empty() || ending == ".") {
        return fileKinds.front();
    }
    const auto* const found = std::ranges::find(fileKinds, lowerCase(ending), &FileKind::ending);
    if (found == fileKinds.end()) {
        fail(
            "'{}' ends in '{}', which names no kind of sound file that can be written; use .wav, .w64, "
            ".rf64, "
            ".aif, .au, .caf, .flac, .ogg, .opus or .mp3",
            path, ending);
    }
    return *found;
}

/// Plain WAV says nothing of speakers. Readers take one or two channels without a word for mono and stereo.
bool needsMask(const SoundFormat& format) {
    return format.channels > 2 ||
           format.mask != rt::defaultSpeakerMask(static_cast<std::int32_t>(format.channels));
}

bool maskFits(const SoundFormat& format) {
    return std::popcount(format.mask) == static_cast<int>(format.channels);
}

int fileFormat(const FileKind& kind, const SoundFormat& format) {
    const bool plainWav = (kind.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_WAV;
    return plainWav && maskFits(format) && needsMask(format) ? SF_FORMAT_WAVEX | SF_FORMAT_FLOAT
                                                             : kind.format;
}

OutputFile& fileOf(void* user) {
    return *static_cast<OutputFile*>(user);
}

/// The library's way to the output, so that no error of the system's is lost in it.
SF_VIRTUAL_IO outputAccess() {
    return {.get_filelen = [](void* user) -> sf_count_t { return fileOf(user).size(); },
            .seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
                return fileOf(user).seek(offset, whence);
            },
            .read = [](void* bytes, sf_count_t count, void* user) -> sf_count_t {
                return static_cast<sf_count_t>(fileOf(user).read(bytes, static_cast<std::size_t>(count)));
            },
            .write = [](const void* bytes, sf_count_t count, void* user) -> sf_count_t {
                return static_cast<sf_count_t>(fileOf(user).write(bytes, static_cast<std::size_t>(count)));
            },
            .tell = [](void* user) -> sf_count_t { return fileOf(user).tell(); }};
}

float encodable(float sample) {
    return std::isnan(sample) ? 0.0f : std::clamp(sample, -1.0f, 1.0f);
}

}  // namespace

struct SoundWriter::Sink {
    Sink(const std::string& outputPath, const SoundFormat& soundFormat)
        : path(outputPath), format(soundFormat), kind(kindOf(outputPath)), kindName(kind.name) {}
    ~Sink() { sf_close(sound); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    void checkFormat(SF_INFO info) const;
    void checkLength(std::uint64_t frames) const;
    void open();
    void nameSpeakers();
    void writePiece(const float* samples, std::uint32_t count);
    const float* prepared(const float* samples, std::uint32_t count);
    [[noreturn]] void refuse() const;

    std::string path;
    SoundFormat format;
    const FileKind& kind;
    std::string kindName;
    std::optional<OutputFile> file;
    SNDFILE* sound = nullptr;
    std::array<std::uint8_t, 8> streamChannel = {0, 1, 2, 3, 4, 5, 6, 7};  ///< Of the file's n-th channel.
    std::vector<float> piece;  ///< pieceFrames x channels, in the file's order; for kinds without floats.
    std::uint64_t framesWritten = 0;
};

void SoundWriter::Sink::refuse() const {
    fail("cannot write '{}': {} can't take {} channels at {} Hz; use another ending, such as .wav", path,
         kind.name, format.channels, format.sampleRate);
}

void SoundWriter::Sink::checkFormat(SF_INFO info) const {
    if (sf_format_check(&info) == 0) {
        refuse();
    }
}

void SoundWriter::Sink::checkLength(std::uint64_t frames) const {
    if (kind.has32BitLengths && frames > maxSoundBytes / (sizeof(float) * format.channels)) {
        fail(
            "cannot write '{}': {} frames are more than its kind of file can hold, 4 GiB; let it end in "
            ".w64, "
            ".rf64 or .caf",
            path, frames);
    }
}

void SoundWriter::Sink::open() {
    SF_INFO info{};
    info.samplerate = static_cast<int>(format.sampleRate);
    info.channels = static_cast<int>(format.channels);
    info.format = fileFormat(kind, format);
    checkFormat(info);
    file.emplace(path);
    SF_VIRTUAL_IO access = outputAccess();
    sound = sf_open_virtual(&access, SFM_WRITE, &info, &*file);
    file->check();
    if (sound == nullptr) {
        refuse();
    }
    // The peak chunk holds the time of day: the same sound would give another file each time.
    sf_command(sound, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(sound, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    nameSpeakers();
    if (!kind.holdsFloats) {
        piece.resize(std::size_t{pieceFrames} * format.channels);
    }
}

void SoundWriter::Sink::nameSpeakers() {
    if (!maskFits(format)) {
        return;
    }
    if (const auto fixed = fixedSpeakers(kind.format, format.channels); !fixed.empty()) {
        const ChannelOrder order = orderToFile(format.mask, fixed).value_or(ChannelOrder{});
        for (std::uint32_t channel = 0; channel < format.channels; ++channel) {
            streamChannel[order.fileChannel[channel]] = static_cast<std::uint8_t>(channel);
        }
        return;
    }
    std::vector<int> positions;
    for (std::uint32_t mask = format.mask; mask != 0; mask &= mask - 1) {
        positions.push_back(positionOfSpeaker(mask & (~mask + 1)));
    }
    // Refused where the kind of file has no word for these speakers: it is then written without.
    sf_command(sound, SFC_SET_CHANNEL_MAP_INFO, positions.data(),
               static_cast<int>(positions.size() * sizeof(int)));
}

/// The samples as the file's kind takes them.
const float* SoundWriter::Sink::prepared(const float* samples, std::uint32_t count) {
    if (kind.holdsFloats) {
        return samples;
    }
    const std::size_t channels = format.channels;
    float* to = piece.data();
    for (std::uint32_t frame = 0; frame < count; ++frame, samples += channels) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            *to++ = encodable(samples[streamChannel[channel]]);
        }
    }
    return piece.data();
}

void SoundWriter::Sink::writePiece(const float* samples, std::uint32_t count) {
    const sf_count_t written = sf_writef_float(sound, prepared(samples, count), count);
    file->check();
    if (written != static_cast<sf_count_t>(count)) {
        refuse();
    }
}

SoundWriter::SoundWriter(const std::string& path, const SoundFormat& format,
                         std::optional<std::uint64_t> expectedFrames)
    : sink(std::make_unique<Sink>(path, format)) {
    sink->checkLength(expectedFrames.value_or(0));
    sink->open();
}

SoundWriter::~SoundWriter() = default;

const std::string& SoundWriter::kind() const {
    return sink->kindName;
}

bool SoundWriter::goesToStandardOutput() const {
    return sink->file->goesToStandardOutput();
}

void SoundWriter::write(const float* samples, std::uint32_t count) {
    sink->framesWritten += count;
    sink->checkLength(sink->framesWritten);
    while (count > 0) {
        const std::uint32_t part = std::min(count, pieceFrames);
        sink->writePiece(samples, part);
        samples += std::size_t{part} * sink->format.channels;
        count -= part;
    }
}

void SoundWriter::finish() {
    const int error = sf_close(std::exchange(sink->sound, nullptr));
    sink->file->check();
    if (error != SF_ERR_NO_ERROR) {
        fail("cannot write '{}': {}", sink->path, sf_error_number(error));
    }
    sink->file->commit();
}

}  // namespace korva::tool
