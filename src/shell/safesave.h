#ifndef BV_SHELL_SAFESAVE_H
#define BV_SHELL_SAFESAVE_H

#include <string>
#include <utility>
#include <vector>

// Replaces the file at path with text by writing a temporary file beside it,
// flushing it to disk and renaming it over the old one, so that a crash or a
// full disk never leaves half a file. On failure the old file stays as it was
// and a failed task "Saving <path>" goes to the event log, except, when
// quietifunwritable, for a folder where the file cannot even be created.
// Saves handed to the writer before are finished first.
bool savesafely(const std::string& path, const std::string& text, bool quietifunwritable = false);

// The same saves, one after the other, on a writer thread of their own, for a
// race frame that cannot wait for the disk: flushing a record and its ghost to
// disk takes some milliseconds. Returns at once; the texts are copies.
void savesafelysoon(std::vector<std::pair<std::string, std::string>> files);

// Waits for the writer's saves and logs those that failed. Every savesafely
// does this first, so a later save of the same file always lands last.
void finishsaves();

#endif
