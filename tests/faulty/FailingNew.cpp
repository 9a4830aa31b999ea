// A preloaded library that refuses requests for memory: of the operators, and mappings that are made or
// grown. It counts them between SUInitialize and SUTerminate, from 1, in the program and in all of its
// libraries.
//
// Environment:
//   ORVANE_FAIL_NEW   "NUMBER only" or "NUMBER from": the requests to refuse; one alone is refused as
//                     a size that no array can have
//   ORVANE_COUNT_NEW  output file for the number of requests
#include <bit>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool counting = false;
uint64_t requests = 0;
uint64_t first = 0; // 0: none
bool all = false;

void CallNext(const char* name) {
    reinterpret_cast<void (*)()>(dlsym(RTLD_NEXT, name))();
}

} // namespace

extern "C" {
void SUInitialize(void) {
    CallNext("SUInitialize");
    const char* text = std::getenv("ORVANE_FAIL_NEW");
    first = text != nullptr ? std::strtoull(text, nullptr, 10) : 0;
    all = text != nullptr && std::strstr(text, "from") != nullptr;
    counting = true;
}

void SUTerminate(void) {
    counting = false;
    CallNext("SUTerminate");
    const char* path = std::getenv("ORVANE_COUNT_NEW");
    std::FILE* file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (file != nullptr) {
        std::fprintf(file, "%llu\n", static_cast<unsigned long long>(requests));
        std::fclose(file);
    }
}
}

// Whether the next request is refused.
static bool IsRefused() {
    if (!counting) {
        return false;
    }
    ++requests;
    return requests == first || (all && requests >= first);
}

extern "C" {
void* mmap(void* address, size_t size, int protection, int flags, int file, off_t offset) {
    if ((flags & MAP_ANONYMOUS) != 0 && IsRefused()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return std::bit_cast<void*>(syscall(SYS_mmap, address, size, protection, flags, file, offset));
}

void* mremap(void* memory, size_t former, size_t size, int flags, ...) {
    va_list more;
    va_start(more, flags);
    void* const target = (flags & MREMAP_FIXED) != 0 ? va_arg(more, void*) : nullptr;
    va_end(more);
    if (IsRefused()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return std::bit_cast<void*>(syscall(SYS_mremap, memory, former, size, flags, target));
}
}

// Replaces the standard operators in the whole process.
void* operator new(size_t size) {
    if (IsRefused()) {
        if (all)
            throw std::bad_alloc();
        throw std::length_error("");
    }
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
