#ifndef BV_SHELL_PERFORMANCE_H
#define BV_SHELL_PERFORMANCE_H

// Measures every frame and publishes the frame rate that all motion is divided by.
struct sPerformance {
    unsigned int tick;
    unsigned int polygons;
    float fps;
    float pps;
    float softfps;
    float softpps;
    bool savenext;

    void init();
    void discardnext();
    void refresh();
    void refresh(unsigned int now);
    void dropfps(unsigned int limit);
    void display();
    void logResults();
};

extern sPerformance performance;

// The clock of lap times, the start countdown and the computer drivers'
// decisions: monotonic wall time in microseconds, so that it keeps pace with
// the player's watch whatever the renderer's threads or vertical sync do.
const long BV_CLOCKS_PER_SEC = 1000000;
long bvclock();

// For simulations under test only: while this is 0 or more, bvclock() answers
// it instead of reading the clock, so a test can run a race faster than real
// time and still get lap times and driver decisions of simulated time. The
// game never sets it; it stays -1.
extern long bvclock_override;

#endif
