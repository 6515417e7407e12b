#ifndef BV_FUZZ_FUZZINPUT_H
#define BV_FUZZ_FUZZINPUT_H

// The readers open files by name, as the game does; a fuzz input is handed to
// them as an in-memory file reached through /proc, so nothing touches the disk.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace bvfuzz {

class MemoryFile {
public:
    MemoryFile() {
        fd_ = memfd_create("bvfuzz", 0);
        if (fd_ < 0) {
            perror("memfd_create");
            abort();
        }
        path_ = "/proc/self/fd/" + std::to_string(fd_);
    }
    // Replaces the whole contents; the path then reads exactly these bytes.
    const char* fill(const uint8_t* data, size_t size) {
        if (ftruncate(fd_, 0) != 0) abort();
        size_t done = 0;
        while (done < size) {
            ssize_t n = pwrite(fd_, data + done, size - done, (off_t)done);
            if (n <= 0) abort();
            done += (size_t)n;
        }
        return path_.c_str();
    }
    const char* path() const { return path_.c_str(); }

private:
    int fd_;
    std::string path_;
};

// Reported like any other crash: a reader broke a promise the game relies on.
#define BVFUZZ_REQUIRE(condition)                                                   \
    do {                                                                           \
        if (!(condition)) {                                                        \
            fprintf(stderr, "%s:%d: broken promise: %s\n", __FILE__, __LINE__, #condition); \
            abort();                                                               \
        }                                                                          \
    } while (0)

}  // namespace bvfuzz

#endif
