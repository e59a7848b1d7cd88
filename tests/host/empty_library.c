// A library of something else.
int somethingElse(void);

int somethingElse(void) {
    return 42;
}
