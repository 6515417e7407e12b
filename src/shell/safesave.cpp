#include "shell/safesave.h"

#include <unistd.h>

#include <cstdio>

#include "shell/blackbox.h"

bool savesafely(const std::string& path, const std::string& text) {
    std::string temp = path + ".tmp";
    bool ok = false;
    if (FILE* f = fopen(temp.c_str(), "w")) {
        ok = fwrite(text.data(), 1, text.size(), f) == text.size();
        ok = fflush(f) == 0 && ok;
        ok = fsync(fileno(f)) == 0 && ok;
        ok = fclose(f) == 0 && ok;
        if (!ok || rename(temp.c_str(), path.c_str()) != 0) {
            remove(temp.c_str());
            ok = false;
        }
    }
    if (!ok) {
        // The log keeps a pointer to the text, so it must outlive this call.
        static std::string line;
        line = "Saving " + path;
        blackbox.task(line.c_str(), false);
    }
    return ok;
}
