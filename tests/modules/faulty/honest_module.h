// A module without a fault, and the places at which another source puts one in.
#pragma once

#include <stdatomic.h>
#include <stdint.h>

#include "korva/dsp_module.h"

/// A low-pass of one pole on each plane, ahead of a gain.
typedef struct Effect {
    DspInstance instance;
    float memory[KORVA_PLANES];
    unsigned inPlanes;
    unsigned outPlanes;
    _Atomic float gain;
    atomic_uint frames;
    atomic_uint parameterBytes;
    atomic_bool metersEnabled;
    _Atomic float levels[KORVA_PLANES];
} Effect;

/// The planes of a format's channels, as bits.
unsigned planesOfFormat(const EngineFormat* format);

/// Takes over the formats, and forgets what an earlier life has heard.
void makeReady(Effect* effect, const EngineFormat* in, const EngineFormat* out);

/// One sample, with what the plane remembers. Numbers that no sound needs are left out: NaN, infinities, and
/// those that processors are slow with.
float lowPass(float* memory, float sample);

// Weak, as are the exports: a source that is linked with this one has others in their place.
extern const DspInstanceTable effectTable;
void effectProcess(DspInstance* instance, DspBlock* block);
/// What happens to a plane's samples.
void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames);
void doNothing(void);
uint32_t hasNoHardware(DspInstance* instance);
