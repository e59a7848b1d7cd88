// A library that another one needs.
extern "C" __attribute__((visibility("default"))) int neededNumber() {
    return 41;
}
