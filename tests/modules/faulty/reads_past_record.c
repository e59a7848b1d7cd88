// Takes the record of a block for longer than it is.
#include "tests/modules/faulty/honest_module.h"

void effectProcess(DspInstance* instance, DspBlock* block) {
    Effect* const effect = (Effect*)instance;
    const volatile uint32_t* const words = (const volatile uint32_t*)block;
    const uint32_t next = words[sizeof *block / sizeof *words];
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        if ((effect->inPlanes | effect->outPlanes) >> plane & 1U) {
            effectPlane(effect, plane, block->channels[plane], block->frames);
        }
    }
    atomic_fetch_add(&effect->frames, block->frames + 0 * next);
}
