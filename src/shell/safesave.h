#ifndef BV_SHELL_SAFESAVE_H
#define BV_SHELL_SAFESAVE_H

#include <string>

// Replaces the file at path with text by writing a temporary file beside it,
// flushing it to disk and renaming it over the old one, so that a crash or a
// full disk never leaves half a file. On failure the old file stays as it was
// and a failed task "Saving <path>" goes to the event log.
bool savesafely(const std::string& path, const std::string& text);

#endif
