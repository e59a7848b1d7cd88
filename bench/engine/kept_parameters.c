// A module that keeps the parameters it is sent, each in a place of its own that is found by its number:
// about the least that any module does with them.
#include <stddef.h>
#include <string.h>

#include "bench/engine/kept_parameters.h"
#include "korva/dsp_module.h"

enum { slotCount = 2048, poolBytes = 1 << 18 };

typedef struct Slot {
    int32_t bank;
    int32_t id;
    uint32_t capacity;  // 0: free
    uint32_t size;
    unsigned char* bytes;
} Slot;

static Slot slots[slotCount];
static unsigned char pool[poolBytes];
static uint32_t poolUsed = 0;
static BenchHeard heard = NULL;

ZRDSPAPI_EXPORT void korvaBenchTell(BenchHeard function) {
    heard = function;
}

static Slot* slotOf(int32_t bank, int32_t id) {
    uint32_t at = ((uint32_t)bank * 977u + (uint32_t)id * 31u) % slotCount;
    while (slots[at].capacity != 0 && (slots[at].bank != bank || slots[at].id != id)) {
        at = (at + 1) % slotCount;
    }
    return &slots[at];
}

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)index;
    Slot* const slot = slotOf(bank, id);
    if (size > slot->capacity) {
        if (size > poolBytes - poolUsed) {
            return 0;
        }
        *slot = (Slot){.bank = bank, .id = id, .capacity = size, .bytes = pool + poolUsed};
        poolUsed += size;
    }
    if (size != 0) {
        memcpy(slot->bytes, data, size);
    }
    slot->size = size;
    if (heard != NULL) {
        heard();
    }
    return 1;
}
