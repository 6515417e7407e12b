// Reading, checking and writing the settings of Data/config.bvd for the settings program.

#include "settingsfile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace bvset {

namespace {

bool parseInt(const std::string& text, int* out) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    long v = strtol(text.c_str(), &end, 10);
    if (*end != 0 || errno != 0 || v < -2147483647L - 1 || v > 2147483647L) return false;
    *out = (int)v;
    return true;
}

}  // namespace

const std::array<Setting, kCount>& settings() {
    return bvlines::kLines;
}

int find(const std::string& name) {
    for (int i = 0; i < kCount; i++)
        if (name == settings()[i].name) return i;
    return -1;
}

Values defaults() {
    Values v{};
    for (int i = 0; i < kCount; i++) v[i] = settings()[i].fallback;
    return v;
}

bool inRange(int index, int value) {
    const Setting& s = settings()[index];
    return value >= s.min && value <= s.max;
}

int normalised(int index, int value) {
    if (inRange(index, value)) return value;
    switch (index) {
    case 0: return 2;  // the game's own 1024x768
    case 1: return 1;  // anything but 0 is 32 bits
    case 2: return 3;  // anything past long is full
    }
    const Setting& s = settings()[index];
    return value < s.min ? s.min : s.max;
}

std::string meaning(int index, int value) {
    const Setting& s = settings()[index];
    if (inRange(index, value)) {
        if (s.kind == Kind::Range) return std::to_string(value) + s.unit;
        return s.steps[value - s.min];
    }
    // What the game itself does with a value this program would not write.
    switch (index) {
    case 0: return "not a listed resolution; the game opens at 1024x768";
    case 1: return "the game takes it as 32 bits";
    case 2: return "the game takes it as full";
    case bvlines::JOYSTICKDEADZONE: return "the game takes it as " + std::to_string(normalised(index, value)) + s.unit;
    default: return "outside " + std::to_string(s.min) + ".." + std::to_string(s.max);
    }
}

std::string allowed(int index) {
    const Setting& s = settings()[index];
    std::string text = std::to_string(s.min) + ".." + std::to_string(s.max);
    if (s.kind != Kind::Range) {
        text += " (";
        for (int v = s.min; v <= s.max; v++) {
            if (v > s.min) text += ", ";
            text += std::to_string(v) + "=" + s.steps[v - s.min];
        }
        text += ")";
    } else if (s.unit[0]) {
        text += std::string(" ") + (std::string(s.unit) == "%" ? "percent" : s.unit);
    }
    return text;
}

bool parseAssignment(const std::string& text, int* index, int* value, std::string* error) {
    size_t eq = text.find('=');
    if (eq == std::string::npos) {
        *error = "'" + text + "' is not NAME=VALUE";
        return false;
    }
    std::string name = text.substr(0, eq), word = text.substr(eq + 1);
    int i = find(name);
    if (i < 0) {
        *error = "there is no setting called '" + name + "'; the settings are:";
        for (const Setting& s : settings()) *error += std::string(" ") + s.name;
        return false;
    }
    const Setting& s = settings()[i];
    int v = 0;
    bool named = false;
    for (int k = 0; k < nsteps(s); k++)
        if (word == s.steps[k]) {
            v = s.min + k;
            named = true;
        }
    // The depth also answers to "16" and "32".
    for (int k = 0; !named && k < nsteps(s); k++)
        if (word + " bits" == s.steps[k]) {
            v = s.min + k;
            named = true;
        }
    if (!named && !parseInt(word, &v)) {
        *error = name + ": '" + word + "' is not a number; allowed: " + allowed(i);
        return false;
    }
    if (!inRange(i, v)) {
        *error = name + ": " + word + " is out of range; allowed: " + allowed(i);
        return false;
    }
    *index = i;
    *value = v;
    return true;
}

ReadResult read(const std::string& path) {
    ReadResult r;
    FILE* f = fopen(path.c_str(), "r");
    if (!f) {
        r.error = path + ": " + strerror(errno);
        r.values = defaults();
        return r;
    }
    // The game's own reading: one number shared by all entries, so an entry
    // that cannot be read repeats the one before it (and a file with no
    // numbers at all reads as zeros).
    char label[256];
    int v = 0;
    for (int i = 0; i < bvlines::kRequired; i++) {
        if (fscanf(f, "%255s%d", label, &v) == 2) r.entries++;
        r.values[i] = v;
    }
    // A line added later that the file does not have is its shipped value.
    for (int i = bvlines::kRequired; i < kCount; i++) {
        r.values[i] = settings()[i].fallback;
        if (fscanf(f, "%255s%d", label, &v) == 2) {
            r.entries++;
            r.values[i] = v;
        }
    }
    fclose(f);
    r.ok = true;
    return r;
}

std::string format(const Values& values) {
    std::string text;
    for (int i = 0; i < kCount; i++) text += std::string(settings()[i].label) + " " + std::to_string(values[i]) + "\n";
    return text;
}

bool write(const std::string& path, const Values& values, std::string* error) {
    std::string text = format(values);
    std::string temp = path + ".XXXXXX";
    int fd = mkstemp(&temp[0]);
    if (fd < 0) {
        *error = "cannot write beside " + path + ": " + strerror(errno);
        return false;
    }
    // mkstemp makes the file private; a settings file is an ordinary one.
    mode_t mode = 0644;
    struct stat st;
    if (stat(path.c_str(), &st) == 0) mode = st.st_mode & 07777;
    int err = fchmod(fd, mode) == 0 ? 0 : errno;
    size_t done = 0;
    while (!err && done < text.size()) {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) err = n < 0 ? errno : EIO;
        else done += (size_t)n;
    }
    if (!err && fsync(fd) != 0) err = errno;
    if (close(fd) != 0 && !err) err = errno;
    if (!err && rename(temp.c_str(), path.c_str()) != 0) err = errno;
    if (!err) return true;
    *error = "cannot write " + path + ": " + strerror(err);
    unlink(temp.c_str());
    return false;
}

}  // namespace bvset
