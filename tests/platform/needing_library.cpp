// A library that needs another one.
extern "C" int neededNumber();

extern "C" __attribute__((visibility("default"))) int ownNumber() {
    return neededNumber() + 1;
}
