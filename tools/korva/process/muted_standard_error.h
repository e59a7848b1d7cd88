// Standard error without what a library of others says there.
#pragma once

namespace korva::tool {

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
