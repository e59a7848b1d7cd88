#include "tests/support/thread_count.h"

#include <windows.h>

#include <tlhelp32.h>

#include <stdexcept>

namespace korva::test {

std::size_t threadCount() {
    HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("the system doesn't tell the number of threads");
    }
    std::size_t count = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = Thread32First(snapshot, &entry); found != 0; found = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1U : 0U;
    }
    CloseHandle(snapshot);
    return count;
}

}  // namespace korva::test
