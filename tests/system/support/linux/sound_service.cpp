#include "tests/system/support/sound_service.h"

namespace korva::test {

// An embedded registry's endpoints are the system's own already.
struct SoundService::State {};

SoundService::SoundService() = default;
SoundService::~SoundService() = default;

}  // namespace korva::test
