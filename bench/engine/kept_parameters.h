// What a benchmark asks of the module that keeps its parameters, besides the interface of all modules.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Called with each parameter that came; the owner's thread calls it.
typedef void (*BenchHeard)(void);

/// The library exports it as "korvaBenchTell"; null for nobody.
void korvaBenchTell(BenchHeard function);

#ifdef __cplusplus
}
#endif
