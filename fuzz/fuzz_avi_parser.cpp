// libFuzzer entry: the input becomes an in-memory file (the parser opens paths) and goes through
// one whole parser pass.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz/ze_parser_exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const int fd = memfd_create("ze-fuzz-input", MFD_CLOEXEC);
    if (fd < 0)
        return 0;
    size_t done = 0;
    while (done < size) {
        const ssize_t n = write(fd, data + done, size - done);
        if (n <= 0)
            break;
        done += static_cast<size_t>(n);
    }
    if (done == size) {
        const std::string path = "/proc/self/fd/" + std::to_string(fd);
        zefuzz::ExerciseParser(path.c_str());
    }
    close(fd);
    return 0;
}
