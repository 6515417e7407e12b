#ifndef BV_FRONTEND_HIGHSCORE_H
#define BV_FRONTEND_HIGHSCORE_H

// The ten best laps of the selected track with their drivers, kept in
// Data/Highscore/<track>.txt, and the "NEW RECORD!" announcement.

#include <string>

const unsigned int HIGHSCORE_N = 10;
const unsigned int HIGHSCORE_NAMELENGTH = 32;

struct sHighscore {
    char laprecord_name[HIGHSCORE_N][HIGHSCORE_NAMELENGTH];
    float laprecord_time[HIGHSCORE_N];
    float thisnewrecorddelay;

    // Reads the table of track.trackname[config.track]; gaps stay "nobody" 99.0.
    void init();
    // Offers the lap gokart[kart] has just finished.
    void checkfornewrecord(unsigned int kart);
    // Once per race frame: the announcement while it lasts.
    void dispifnewrecord();
    void save();
    // The record file's text, as save() writes it.
    std::string text() const;
};

extern sHighscore highscore;

#endif
