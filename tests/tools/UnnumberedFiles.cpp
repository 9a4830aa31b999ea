// A library to preload: every file has the same device and number, as on volumes without file numbers.
// All other results are the system's.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

// The system's operation behind one of this library.
template <typename Operation> Operation* Behind(const char* name) {
    return reinterpret_cast<Operation*>(dlsym(RTLD_NEXT, name));
}

template <typename Status> int WithoutNumber(int result, Status& status) {
    if (result == 0) {
        status.st_dev = 1;
        status.st_ino = 1;
    }
    return result;
}

} // namespace

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
    return WithoutNumber(Behind<decltype(stat)>("stat")(path, status), *status);
}

int stat64(const char* path, struct stat64* status) noexcept {
    return WithoutNumber(Behind<decltype(stat64)>("stat64")(path, status), *status);
}

int lstat(const char* path, struct stat* status) noexcept {
    return WithoutNumber(Behind<decltype(lstat)>("lstat")(path, status), *status);
}

int lstat64(const char* path, struct stat64* status) noexcept {
    return WithoutNumber(Behind<decltype(lstat64)>("lstat64")(path, status), *status);
}

int fstat(int file, struct stat* status) noexcept {
    return WithoutNumber(Behind<decltype(fstat)>("fstat")(file, status), *status);
}

int fstat64(int file, struct stat64* status) noexcept {
    return WithoutNumber(Behind<decltype(fstat64)>("fstat64")(file, status), *status);
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
    return WithoutNumber(Behind<decltype(fstatat)>("fstatat")(folder, path, status, flags), *status);
}

int fstatat64(int folder, const char* path, struct stat64* status, int flags) noexcept {
    return WithoutNumber(Behind<decltype(fstatat64)>("fstatat64")(folder, path, status, flags), *status);
}

int statx(int folder, const char* path, int flags, unsigned mask, struct statx* status) noexcept {
    const int result = Behind<decltype(statx)>("statx")(folder, path, flags, mask, status);
    if (result == 0) {
        status->stx_dev_major = 0;
        status->stx_dev_minor = 1;
        status->stx_ino = 1;
    }
    return result;
}
}
