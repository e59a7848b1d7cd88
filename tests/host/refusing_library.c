// A library that has what hosts ask for, and refuses all of it. What it may leave out a definition leaves
// out.
#include <stddef.h>
#include <stdint.h>

int32_t DllGetClassObject(const void* classId, const void* id, void** object);
int32_t DllCanUnloadNow(void);
int32_t DllRegisterServer(void);
int32_t DllUnregisterServer(void);

int32_t DllGetClassObject(const void* classId, const void* id, void** object) {
    (void)classId;
    (void)id;
    *object = NULL;
    return (int32_t)0x80040111U;  // CLASS_E_CLASSNOTAVAILABLE
}

int32_t DllCanUnloadNow(void) {
    return 1;  // S_FALSE
}

#ifndef KORVA_PLAYS_ONLY
int32_t DllRegisterServer(void) {
    return (int32_t)0x80070005U;  // E_ACCESSDENIED
}

int32_t DllUnregisterServer(void) {
    return (int32_t)0x8007000EU;  // E_OUTOFMEMORY
}
#endif
