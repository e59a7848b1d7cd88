// The library that the module needs.
__attribute__((visibility("default"))) int somebodyElses(void);

int somebodyElses(void) {
    return 1;
}
