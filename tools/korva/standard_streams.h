// The three streams that every process is given.
#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <string_view>

namespace korva::tool {

/// Fills the places of those of the three that the parent closed, so that no file that is opened later is
/// taken for one of them. To write to such a one remains an error. To be called before any file is opened.
void reserveStandardStreams();

[[nodiscard]] bool isTerminal(std::FILE* stream);

/// Whether a file is the one that standard output goes to, so that both would be mixed. Devices don't count:
/// what goes to one twice goes to the same place.
[[nodiscard]] bool isStandardOutput(const struct stat& file);

/// Writes all of `text`. Throws when it can't be written whole.
void printOutput(std::string_view text);

/// Throws if standard output is a pipe whose reader is gone, for those who may have nothing to write for
/// long.
void expectReaderOfOutput();

/// Keeps others' remarks off standard error while it lives: decoders print there.
class MutedStandardError {
public:
    MutedStandardError();
    ~MutedStandardError();
    MutedStandardError(const MutedStandardError&) = delete;
    MutedStandardError& operator=(const MutedStandardError&) = delete;

private:
    int kept;  ///< Where standard error went before; below 0 if it couldn't be muted.
};

}  // namespace korva::tool
