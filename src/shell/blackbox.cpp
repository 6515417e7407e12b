// The event log, Data/blackbox.bvd, written a line at a time.

#include "shell/blackbox.h"

#include <GL/gl.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

static const char* kByline = "the Brontevalle team <team@brontevalle.example.org>, https://brontevalle.example.org";

void sBlackbox::write(const char* text) {
    FILE* f = fopen(file, "a");
    if (f) {
        fputs(text, f);
        fclose(f);
    }
    if (console) printf("%s", text);
}

void sBlackbox::init(const char* path, bool echo) {
    snprintf(file, sizeof file, "%s", path);
    console = echo;
    status = true;
    last_task[0] = 0;
    FILE* f = fopen(file, "w");
    if (f) fclose(f);
    date();
    std::string header = std::string("Brontevalle") + " " + "v1.02b3" + " | " + kByline;
    msg(header.c_str());
    systemInfo();
}

void sBlackbox::task(const char* text, bool ok) {
    // A copy: callers hand over texts that are gone when the call returns.
    snprintf(last_task, sizeof last_task, "%s", text);
    if (!ok) status = false;
    consoletask(text, ok);
}

void sBlackbox::consoletask(const char* text, bool ok) {
    std::string line = std::string(text) + (ok ? " [OK]\n" : " [  ]\n");
    write(line.c_str());
}

void sBlackbox::msg(const char* text) {
    std::string line = std::string(" ") + text + "\n";
    write(line.c_str());
}

void sBlackbox::date() {
    time_t now = time(nullptr);
    std::string line = std::string(" ") + ctime(&now);
    write(line.c_str());
}

void sBlackbox::systemInfo() {}

// Built from std::string so that no driver string, however long, is cut or overruns.
void sBlackbox::rendererInfo() {
    auto str = [](GLenum name) {
        const GLubyte* s = glGetString(name);
        return std::string(s ? reinterpret_cast<const char*>(s) : "");
    };
    std::string line = str(GL_VENDOR) + " v" + str(GL_VERSION) + " " + str(GL_RENDERER);
    msg(line.c_str());
    msg("--------");
    std::string extensions = str(GL_EXTENSIONS);
    size_t start = 0;
    while (start < extensions.size()) {
        size_t end = extensions.find(' ', start);
        if (end == std::string::npos) end = extensions.size();
        if (end > start) msg(extensions.substr(start, end - start).c_str());
        start = end + 1;
    }
    msg("--------");
}

void sBlackbox::free() {
    msg(status ? "everything went smooth! :)" : "something went wrong! :(");
    date();
}
