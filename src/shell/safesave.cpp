// savesafely: a file replaced whole or not at all.

#include "shell/safesave.h"

#include <unistd.h>

#include <cstdio>
#include <thread>

#include "shell/blackbox.h"

namespace {

enum eWrite { WRITTEN, UNWRITABLE, FAILED };

eWrite writeatomically(const std::string& path, const std::string& text) {
    std::string temp = path + ".tmp";
    FILE* f = fopen(temp.c_str(), "w");
    if (!f) return UNWRITABLE;
    bool ok = fwrite(text.data(), 1, text.size(), f) == text.size();
    ok = fflush(f) == 0 && ok;
    ok = fsync(fileno(f)) == 0 && ok;
    ok = fclose(f) == 0 && ok;
    if (!ok || rename(temp.c_str(), path.c_str()) != 0) {
        remove(temp.c_str());
        return FAILED;
    }
    return WRITTEN;
}

// One batch of saves at a time. Only the writer touches `failed` until it is
// joined; the event log is written by the main thread alone.
struct sWriter {
    std::thread thread;
    std::vector<std::string> failed;
    ~sWriter() {
        if (thread.joinable()) thread.join();
    }
} writer;

}  // namespace

void finishsaves() {
    if (writer.thread.joinable()) writer.thread.join();
    for (const std::string& path : writer.failed) blackbox.task(("Saving " + path).c_str(), false);
    writer.failed.clear();
}

void savesafelysoon(std::vector<std::pair<std::string, std::string>> files) {
    finishsaves();
    writer.thread = std::thread([files = std::move(files)] {
        for (const auto& [path, text] : files)
            if (writeatomically(path, text) != WRITTEN) writer.failed.push_back(path);
    });
}

bool savesafely(const std::string& path, const std::string& text, bool quietifunwritable) {
    finishsaves();
    eWrite result = writeatomically(path, text);
    if (result == UNWRITABLE && quietifunwritable) return false;
    if (result != WRITTEN) blackbox.task(("Saving " + path).c_str(), false);
    return result == WRITTEN;
}
