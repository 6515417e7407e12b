// The settings program's command line: --show lists the settings, --set changes them.

#include "cli.h"

#include "settingsfile.h"

namespace bvset {

int show(const std::string& path, FILE* out, FILE* err) {
    ReadResult r = read(path);
    if (!r.ok) {
        fprintf(err, "brontevalle-config: cannot read %s\n", r.error.c_str());
        return 1;
    }
    if (r.entries < kRequired)
        fprintf(err, "brontevalle-config: %s holds only %d of the %d settings; the game repeats the last value read for the rest, as shown\n",
                path.c_str(), r.entries, kRequired);
    for (int i = 0; i < kCount; i++) {
        std::string left = std::string(settings()[i].name) + "=" + std::to_string(r.values[i]);
        fprintf(out, "%-22s %s\n", left.c_str(), meaning(i, r.values[i]).c_str());
    }
    return 0;
}

int set(const std::string& path, const std::vector<std::string>& assignments, FILE* out, FILE* err) {
    if (assignments.empty()) {
        fprintf(err, "brontevalle-config: --set needs at least one NAME=VALUE\n");
        return 2;
    }
    std::vector<std::pair<int, int>> changes;
    for (const std::string& a : assignments) {
        int index, value;
        std::string error;
        if (!parseAssignment(a, &index, &value, &error)) {
            fprintf(err, "brontevalle-config: %s\nbrontevalle-config: nothing was changed\n", error.c_str());
            return 2;
        }
        changes.push_back({index, value});
    }
    ReadResult r = read(path);
    if (!r.ok)
        fprintf(err, "brontevalle-config: cannot read %s; starting from the shipped settings\n", r.error.c_str());
    for (auto [index, value] : changes) r.values[index] = value;
    std::string error;
    if (!write(path, r.values, &error)) {
        fprintf(err, "brontevalle-config: %s\n", error.c_str());
        return 1;
    }
    for (auto [index, value] : changes)
        fprintf(out, "%s=%d (%s)\n", settings()[index].name, value, meaning(index, value).c_str());
    return 0;
}

}  // namespace bvset
