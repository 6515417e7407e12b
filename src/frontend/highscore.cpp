// Each track's ten best laps: reading, ranking, saving, and the "NEW RECORD!" text.

#include "frontend/highscore.h"

#include <GL/gl.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "assets/font.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "shell/safesave.h"
#include "track/track.h"

sHighscore highscore;

static std::string recordfile() {
    return std::string(config.PATH) + "Data/Highscore/" + track.trackname[config.track] + ".txt";
}

void sHighscore::init() {
    thisnewrecorddelay = 0;
    for (unsigned int i = 0; i < HIGHSCORE_N; i++) {
        strcpy(laprecord_name[i], "nobody");
        laprecord_time[i] = 99.0f;
    }
    FILE* f = fopen(recordfile().c_str(), "r");
    if (!f) return;
    for (unsigned int i = 0; i < HIGHSCORE_N && !feof(f); i++) {
        // A name longer than the field would run over it; the width keeps it in.
        if (fscanf(f, "%31s%f", laprecord_name[i], &laprecord_time[i]) != 2) {
            // a short or damaged line keeps whatever was read of it
        }
    }
    fclose(f);
}

void sHighscore::checkfornewrecord(unsigned int kart) {
    float t = gokart[kart].currentlaptime;
    unsigned int p = 0;
    // Strictly slower entries only: an equal time goes below the older record.
    while (p < HIGHSCORE_N && !(laprecord_time[p] > t)) p++;
    if (p == HIGHSCORE_N) {
        // Any kart's lap, a computer's too, restarts the player's recording.
        ghost.badone();
        return;
    }
    for (unsigned int i = HIGHSCORE_N - 1; i > p; i--) {
        strcpy(laprecord_name[i], laprecord_name[i - 1]);
        laprecord_time[i] = laprecord_time[i - 1];
    }
    laprecord_time[p] = t;
    if (kart == 0) {
        snprintf(laprecord_name[p], HIGHSCORE_NAMELENGTH, "%s", config.player1name);
    } else {
        strcpy(laprecord_name[p], "CPU");
    }
    // Written the moment they are set, so that a crash or a kill after the lap
    // cannot take the record or its ghost with it; by the writer thread, so
    // that the frame does not wait for the disk.
    std::vector<std::pair<std::string, std::string>> files = {{recordfile(), text()}};
    if (kart == 0) {
        if (p == 0) {
            ghost.goodone();
            files.push_back({ghost.file(), ghost.text()});
            thisnewrecorddelay = 3.0f;
        } else {
            ghost.badone();
        }
    }
    savesafelysoon(std::move(files));
}

void sHighscore::dispifnewrecord() {
    if (thisnewrecorddelay > 0) {
        fontTGA.out(0.5f, 0.5f, 1, 0, 0, FONT_ALIGN_CENTER, 0.03f, "NEW RECORD!");
        thisnewrecorddelay -= 1.0f / performance.fps;
    }
}

std::string sHighscore::text() const {
    std::string text;
    // A whole name and the longest "%f" there is fit with room to spare.
    char line[HIGHSCORE_NAMELENGTH + 64];
    for (unsigned int i = 0; i < HIGHSCORE_N; i++) {
        snprintf(line, sizeof line, "%s %f\n", laprecord_name[i], laprecord_time[i]);
        text += line;
    }
    return text;
}

void sHighscore::save() {
    savesafely(recordfile(), text());
}
