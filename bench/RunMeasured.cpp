// Runs a command and appends "seconds kilobytes exit-code" to a file: processor time, which other work
// on the machine affects least, and peak memory. A small program, because a child's peak starts with
// that of its parent.
#include <cstdio>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "Usage: run-measured <result file> <command> [arguments]\n");
        return 1;
    }
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
    std::fprintf(file, "%.4f %ld %d\n", seconds(usage.ru_utime) + seconds(usage.ru_stime),
                 usage.ru_maxrss, exitCode);
    return std::fclose(file) == 0 ? 0 : 1;
}
