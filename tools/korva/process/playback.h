// One stream, from its lock to its unlock.
#pragma once

#include <cstddef>
#include <vector>

#include "korva/host/audio_object.h"
#include "korva/process/played_endpoint.h"
#include "korva/process/played_module.h"
#include "korva/process/process_report.h"
#include "korva/process/sound_reader.h"
#include "korva/process/sound_writer.h"
#include "korva/process/stream_events.h"
#include "korva/progress_bar.h"

namespace korva::tool {

/// Sends a sound through an object, buffer by buffer, and makes changes when their time in the sound has
/// come. All that it is given lives longer.
class Playback {
public:
    /// `report` has the formats and the length of buffers, and gets what there is to tell.
    Playback(AudioObject& object, const PlayedModule& module, const PlayedEndpoint& endpoint,
             const std::vector<StreamEvent>& events, ProcessReport& report) noexcept;

    /// From now on the buffers come as fast as the sound goes, and not as fast as they can.
    void keepPace() noexcept { isPaced = true; }

    /// Throws `ToolError` or `Interrupted`.
    void play(SoundReader& reader, SoundWriter& writer, ProgressBar& progress);

private:
    void playBuffer(EngineBuffers& buffers, std::uint32_t frames);
    void makeChanges();
    void checkAllMade() const;
    void make(const PresetChange& change, ReportedChange& made);
    void make(const VolumeChange& change, ReportedChange& made);

    AudioObject& object;
    const PlayedModule& module;
    const PlayedEndpoint& endpoint;
    const std::vector<StreamEvent>& events;
    std::size_t next = 0;  ///< Of the events.
    ProcessReport& report;
    bool isPaced = false;
    bool isModuleNew = true;  ///< No buffer has shown yet whether it works.
};

}  // namespace korva::tool
