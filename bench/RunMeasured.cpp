// Runs a command and appends "seconds kilobytes exit-code page-faults" to a file: processor time, which
// other work on the machine affects least, and peak memory. A small program, because a child's peak
// starts with that of its parent.
//
// Before that, another child touches and frees memory: on a virtual machine the first to touch memory of
// the host would pay for it.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// More than the largest model needs. [Units: bytes]
constexpr size_t TouchedBefore = size_t{1200} << 20;

static void TouchMemory() {
    const pid_t child = fork();
    if (child == 0) {
        void* const memory =
            mmap(nullptr, TouchedBefore, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory != MAP_FAILED) {
            madvise(memory, TouchedBefore, MADV_HUGEPAGE);
            std::memset(memory, 1, TouchedBefore);
        }
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

int main(int argc, char** argv) {
    if (argc > 2 && std::strcmp(argv[1], "--small-pages") == 0) {
        // Inherited by the command.
        prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
        ++argv;
        --argc;
    }
    if (argc < 3) {
        std::fprintf(stderr,
                     "Usage: run-measured [--small-pages] <result file> <command> [arguments]\n");
        return 1;
    }
    TouchMemory();
    pid_t child = 0;
    if (posix_spawnp(&child, argv[2], nullptr, nullptr, argv + 2, environ) != 0) {
        std::perror(argv[2]);
        return 1;
    }
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child) {
        return 1;
    }
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::FILE* file = std::fopen(argv[1], "a");
    if (file == nullptr) {
        std::perror(argv[1]);
        return 1;
    }
    std::fprintf(file, "%.4f %ld %d %ld\n", seconds(usage.ru_utime) + seconds(usage.ru_stime),
                 usage.ru_maxrss, exitCode, usage.ru_minflt + usage.ru_majflt);
    return std::fclose(file) == 0 ? 0 : 1;
}
