#ifndef BV_CONFIG_CLI_H
#define BV_CONFIG_CLI_H

// The settings program without a window: --show and --set.

#include <cstdio>
#include <string>
#include <vector>

namespace bvset {

// Prints the settings of the file as NAME=VALUE with what each means.
// Returns the exit status: 0, or 1 when the file cannot be read.
int show(const std::string& path, FILE* out, FILE* err);

// Applies NAME=VALUE assignments. Every one is checked before anything is
// written: one bad value refuses them all (status 2, the file untouched).
// Status 1 when the file cannot be written.
int set(const std::string& path, const std::vector<std::string>& assignments, FILE* out, FILE* err);

}  // namespace bvset

#endif
