#ifndef BV_DATAGEN_CONTENT_H
#define BV_DATAGEN_CONTENT_H

// Everything the generator makes, as a list of jobs. The jobs are pure: the
// same job gives the same bytes on every run and on every machine we build on.

#include <functional>
#include <string>
#include <vector>

#include "writers/tga.h"

namespace gen {

// One picture below Data/, for example "GUI/t.tga".
struct Picture {
    std::string path;
    int bpp;   // 24 or 32
    bool rle;  // run-length encoded or raw
    std::function<bvw::RGBA8Image()> make;
};

// One sound or piece of music below Data/; write returns false on failure.
struct SoundFile {
    std::string path;
    std::function<bool(const std::string& file)> write;
};

void fontPictures(std::vector<Picture>& out);
void guiPictures(std::vector<Picture>& out);
void trackPictures(std::vector<Picture>& out);
void kartPictures(std::vector<Picture>& out);
void modelPictures(std::vector<Picture>& out);
void adPictures(std::vector<Picture>& out);
std::vector<Picture> allPictures();

void soundFiles(std::vector<SoundFile>& out);
void musicFiles(std::vector<SoundFile>& out);
std::vector<SoundFile> allSounds();

// The engine loop's period in samples at its own rate, kSoundRate: the
// driving code's base frequency of 22000 plays it at about this pitch.
const int kSoundRate = 22050;
const int kEnginePeriod = 360;  // 61.25 Hz, a kart engine ticking over

// The font picture's layout: 16 x 16 cells of kFontCell pixels.
const int kFontCell = 64;
const int kFontBaseline = 44;  // baseline row inside a cell, from its top
const int kFontMargin = 4;     // ink stays this far from a cell's edges

}  // namespace gen

#endif
