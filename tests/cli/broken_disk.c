/* Preloaded into a program, plays a disk with faults:
 * BROKEN_READ_PATH      reads of this file fail
 * BROKEN_READ_AFTER     once they go beyond so many bytes
 * BROKEN_SYNC           "fail": files can't be brought to the disk; "interrupt": SIGINT comes meanwhile */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

static int isBroken(int descriptor) {
    struct stat opened;
    struct stat broken;
    const char* const path = getenv("BROKEN_READ_PATH");
    return path != NULL && fstat(descriptor, &opened) == 0 && stat(path, &broken) == 0 &&
           opened.st_dev == broken.st_dev && opened.st_ino == broken.st_ino;
}

ssize_t read(int descriptor, void* bytes, size_t count) {
    ssize_t (*next)(int, void*, size_t);
    *(void**)&next = dlsym(RTLD_NEXT, "read");
    if (isBroken(descriptor) &&
        lseek(descriptor, 0, SEEK_CUR) + (off_t)count > (off_t)atoll(getenv("BROKEN_READ_AFTER"))) {
        errno = EIO;
        return -1;
    }
    return next(descriptor, bytes, count);
}

int fsync(int descriptor) {
    int (*next)(int);
    const char* const fault = getenv("BROKEN_SYNC");
    *(void**)&next = dlsym(RTLD_NEXT, "fsync");
    if (fault != NULL && strcmp(fault, "fail") == 0) {
        errno = EIO;
        return -1;
    }
    if (fault != NULL && strcmp(fault, "interrupt") == 0) {
        raise(SIGINT);
    }
    return next(descriptor);
}
