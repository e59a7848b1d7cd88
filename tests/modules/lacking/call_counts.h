// What the modules that lack something count, for C and C++.
#pragma once

#include <stdint.h>

/// Calls of each export, and of three entries of the instance's table, since the library was loaded.
typedef struct CallCounts {
    uint32_t Create;
    uint32_t Free;
    uint32_t IsInputFormatSupported;
    uint32_t IsOutputFormatSupported;
    uint32_t IsCaptureFormatSupported;
    uint32_t Initialize;
    uint32_t Uninitialize;
    uint32_t SetInputGain;
    uint32_t SetParameter;
    uint32_t SetGetData;
    uint32_t Clear;
    uint32_t WakeUp;
    uint32_t Process;
    uint32_t Capture;
    uint32_t entryProcess;
    uint32_t entryCapture;
    uint32_t entryIsHardwareAvailable;
} CallCounts;

/// `callCounts`, an export beside those of the module interface.
typedef const CallCounts* CallCountsOf(void);
