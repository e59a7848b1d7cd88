// What the library exports: the entry points of an in-process server.
#include "apo/class_object.h"
#include "apo/registration/server_registration.h"
#include "platform/published/results.h"

extern "C" {

HRESULT STDMETHODCALLTYPE DllGetClassObject(REFCLSID clsid, REFIID id, void** object) {
    return korva::apo::getClassObject(clsid, id, object);
}

HRESULT STDMETHODCALLTYPE DllCanUnloadNow() {
    return korva::apo::isInUse() ? korva::published::okButNo : korva::published::ok;
}

HRESULT STDMETHODCALLTYPE DllRegisterServer() {
    return korva::apo::registerServer();
}

HRESULT STDMETHODCALLTYPE DllUnregisterServer() {
    return korva::apo::unregisterServer();
}
}
