#include "core/GiveBack.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>

#include "core/Background.h"

namespace vostel {

namespace {

// proc_pid_smaps(5): a line for each mapping, then lines about it. Code is dropped when it comes
// from a file and none of its pages was written to: the page cache then has the same.
void dropCode() {
    const std::unique_ptr<FILE, int (*)(FILE*)> smaps(std::fopen("/proc/self/smaps", "re"),
                                                      &std::fclose);
    if (!smaps) {
        return;
    }
    char line[4400];  // a path may have 4096 bytes
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool isCode = false;
    while (std::fgets(line, sizeof line, smaps.get()) != nullptr) {
        char rights[5] = {};
        unsigned long anonymous = 0;
        std::uintptr_t first = 0;  // a word like "Anonymous" begins with a digit, too
        std::uintptr_t last = 0;
        if (std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s", &first, &last, rights) == 3) {
            begin = first;
            end = last;
            isCode = std::strcmp(rights, "r-xp") == 0 && std::strchr(line, '/') != nullptr;
        } else if (isCode && std::sscanf(line, "Anonymous: %lu kB", &anonymous) == 1 &&
                   anonymous == 0) {
            madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
        }
    }
}

}  // namespace

void giveBackMemory() {
    malloc_trim(0);
    dropCode();
}

void giveBackMemory(Background& background) {
    background.run(
        nullptr,
        [] {
            giveBackMemory();
            return true;
        },
        [](bool) {});
}

}  // namespace vostel
