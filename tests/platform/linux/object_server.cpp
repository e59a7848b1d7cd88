// A library with one class of objects that can do nothing.
#include "platform/counted_object.h"
#include "platform/published/class_factory.h"

namespace {

using korva::platform::CountedObject;
using korva::platform::Reference;

class Object final : public CountedObject<IUnknown> {
    ~Object() override = default;
};

class Factory final : public CountedObject<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* /*outer*/, REFIID id, void** object) override {
        const Reference<Object> made(new Object);
        return made->QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return korva::published::ok; }

private:
    ~Factory() override = default;
};

constexpr CLSID onlyClass = {0x11111111, 0x2222, 0x3333, {0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0xAB}};

}  // namespace

extern "C" [[gnu::visibility("default")]] HRESULT DllGetClassObject(const CLSID& classId, const IID& id,
                                                                    void** object);

extern "C" HRESULT DllGetClassObject(const CLSID& classId, const IID& id, void** object) {
    *object = nullptr;
    if (!(classId == onlyClass)) {
        return korva::published::classNotAvailable;
    }
    const Reference<Factory> factory(new Factory);
    return factory->QueryInterface(id, object);
}
