// How long loading a library takes: dlopen with all symbols bound, each time in
// a fresh process, since a library that is unloaded may leave parts behind.
// usage: load_time LIBRARY [LIBRARY THAT IT NEEDS...]; prints the median in
// nanoseconds. What is needed is loaded before and not counted.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

long nanosecondsToLoad(const char* library) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const void* const handle = dlopen(library, RTLD_NOW);
    const Clock::time_point end = Clock::now();
    if (!handle) std::fprintf(stderr, "%s\n", dlerror());
    if (!handle) return -1;
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(end - start).count());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    for (int i = 2; i < argc; ++i)
        if (!dlopen(argv[i], RTLD_NOW | RTLD_GLOBAL)) return 2;
    std::vector<long> times;
    for (int turn = 0; turn < 51; ++turn) {
        int ends[2];
        if (pipe(ends) != 0) return 2;
        const pid_t child = fork();
        if (child == 0) {
            const long time = nanosecondsToLoad(argv[1]);
            _exit(write(ends[1], &time, sizeof time) == sizeof time ? 0 : 1);
        }
        long time = -1;
        const bool read = child > 0 && ::read(ends[0], &time, sizeof time) == sizeof time;
        close(ends[0]);
        close(ends[1]);
        waitpid(child, nullptr, 0);
        if (!read || time < 0) return 1;
        times.push_back(time);
    }
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    std::printf("%ld\n", times[times.size() / 2]);
}
