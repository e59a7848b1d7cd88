// Writes to planes that no channel is on.
#include "tests/modules/faulty/honest_module.h"

void effectProcess(DspInstance* instance, DspBlock* block) {
    Effect* const effect = (Effect*)instance;
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        for (uint32_t i = 0; i < block->frames; ++i) {
            block->channels[plane][i] = 0.5F * block->channels[plane][i] + 1e-9F;
        }
    }
    atomic_fetch_add(&effect->frames, block->frames);
}
