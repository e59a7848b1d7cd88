// korva process IN OUT: plays the audio engine around the object, from one sound file to another.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korva::tool {

/// As the command line has them, each still to be checked.
struct ProcessOptions {
    std::string input;
    std::string output;
    std::string effect = "sfx";
    std::string outputLayout;  ///< Empty: the input's own.
    std::string bufferFrames = "480";
    std::string endpoint;  ///< Its identifier.
    bool hasEndpoint = false;
    std::string preset;  ///< A file; without it what the endpoint has.
    bool hasPreset = false;
    std::string generation = "2";
    std::string library;  ///< Without it the one beside the tool.
    bool hasLibrary = false;
    std::string moduleFolder;  ///< Without it the library's own.
    bool hasModuleFolder = false;
    std::vector<std::string> changes;  ///< SECONDS=FILE
    std::vector<std::string> volumes;  ///< SECONDS=SCALAR
    bool meters = false;
    bool atItsOwnPace = false;
    bool json = false;
    bool quiet = false;
};

/// Throws `ToolError`, or `Interrupted`; then the output is as it was before. (When only the report can't be
/// printed, the output is complete.)
void runProcess(const ProcessOptions& options);

}  // namespace korva::tool
