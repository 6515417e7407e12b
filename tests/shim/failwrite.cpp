// A full disk on demand, for the save tests: loaded with LD_PRELOAD into a
// program that saves, it makes the writes to one file fail part-way.
//
//   BVFAIL_PATH=text    files opened for writing whose path contains text
//   BVFAIL_AFTER=n      take the first n bytes written to such a file, then
//                       fail every write with ENOSPC (the bytes up to n do
//                       reach the file, as on a disk that has just filled up)
//   BVFAIL_FSYNC=1      fail fsync of such a file with EIO instead
//
// stdio writes through glibc's own internal write, which no preloaded
// library can replace; so the matching files are handed out as stdio streams
// of our own (fopencookie) over a real descriptor, and fileno() and fsync()
// on them answer for that descriptor.

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <mutex>

namespace {

struct Target {
    FILE* stream = nullptr;
    int fd = -1;
    long written = 0;
};

const int kTargets = 16;
Target targets[kTargets];
std::mutex lock;

long allowance() {
    const char* after = getenv("BVFAIL_AFTER");
    return after ? atol(after) : -1;
}

ssize_t cookiewrite(void* cookie, const char* buf, size_t size) {
    Target* t = (Target*)cookie;
    long limit = allowance();
    size_t take = size;
    if (limit >= 0 && t->written + (long)size > limit) take = limit > t->written ? (size_t)(limit - t->written) : 0;
    size_t done = 0;
    while (done < take) {
        ssize_t n = write(t->fd, buf + done, take - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return done;  // a short count is stdio's sign of an error
        }
        done += (size_t)n;
    }
    t->written += (long)done;
    if (done < size) errno = ENOSPC;
    return (ssize_t)done;
}

int cookieclose(void* cookie) {
    Target* t = (Target*)cookie;
    int r = close(t->fd);
    std::lock_guard<std::mutex> g(lock);
    t->stream = nullptr;
    t->fd = -1;
    return r;
}

bool matches(const char* path, const char* mode) {
    const char* text = getenv("BVFAIL_PATH");
    return text && *text && path && strstr(path, text) && mode && (mode[0] == 'w' || mode[0] == 'a');
}

Target* byfd(int fd) {
    for (Target& t : targets)
        if (t.stream && t.fd == fd) return &t;
    return nullptr;
}

}  // namespace

extern "C" FILE* fopen(const char* path, const char* mode) {
    static auto real = (FILE * (*)(const char*, const char*)) dlsym(RTLD_NEXT, "fopen");
    if (!matches(path, mode)) return real(path, mode);
    int flags = O_WRONLY | O_CREAT | (mode[0] == 'a' ? O_APPEND : O_TRUNC);
    int fd = open(path, flags | O_CLOEXEC, 0666);
    if (fd < 0) return nullptr;
    std::lock_guard<std::mutex> g(lock);
    for (Target& t : targets) {
        if (t.stream) continue;
        t.fd = fd;
        t.written = 0;
        cookie_io_functions_t io = {nullptr, cookiewrite, nullptr, cookieclose};
        t.stream = fopencookie(&t, mode, io);
        if (!t.stream) {
            close(fd);
            t.fd = -1;
        }
        return t.stream;
    }
    close(fd);
    errno = EMFILE;
    return nullptr;
}

extern "C" FILE* fopen64(const char* path, const char* mode) {
    return fopen(path, mode);
}

extern "C" int fileno(FILE* stream) {
    static auto real = (int (*)(FILE*))dlsym(RTLD_NEXT, "fileno");
    {
        std::lock_guard<std::mutex> g(lock);
        for (Target& t : targets)
            if (t.stream && t.stream == stream) return t.fd;
    }
    return real(stream);
}

extern "C" int fsync(int fd) {
    static auto real = (int (*)(int))dlsym(RTLD_NEXT, "fsync");
    const char* fail = getenv("BVFAIL_FSYNC");
    bool ours;
    {
        std::lock_guard<std::mutex> g(lock);
        ours = byfd(fd) != nullptr;
    }
    if (ours && fail && atoi(fail)) {
        errno = EIO;
        return -1;
    }
    return real(fd);
}
