#ifndef BV_SCENE_SPLITS_H
#define BV_SCENE_SPLITS_H

// Split times against the best lap: at every tenth of the lap, how far kart 0
// is ahead of (green, "-0.42") or behind (red, "+0.31") the ghost's lap, and
// at the lap's end the whole lap against the best. Shown for two seconds of
// race time under the lap time; only for a human kart 0 on a track with a best.

// The nine barrier pairs inside the lap that split it in tenths; the lap's
// end makes the tenth split.
const unsigned int SPLITS_N = 9;

// The pair that ends tenth k (1..SPLITS_N) of a circuit of `pairs` pairs.
unsigned int splitcheckpoint(unsigned int k, unsigned int pairs);

// The best lap's time at each split, worked out from its recorded samples
// (kart 0's place and heading, one every `period` seconds, ending at the
// frame the lap was closed after bestTime seconds) the way a kart's own
// checkpoint is reached, with the present track and frame rate: seconds into
// the lap that currentlaptime would read on the frame the kart's checkpoint
// becomes each split pair. Negative where the samples cannot tell: a
// recording that starts after the lap did, or one cut short at its size.
// Returns whether any split could be worked out.
bool splitsfromsamples(const float* px, const float* pz, const float* ay, int n, float bestTime, float fps,
                       float times[SPLITS_N]);

struct sSplits {
    float reference[SPLITS_N];  // the best lap's times at the splits, for the lap under way; < 0 unknown
    float referencelap;         // the best lap's time as it was when this lap began; < 0 none
    bool armed;                 // this lap began since the last reset, with a best to compare with
    bool counted;               // kart 0's thislapcounted on the last frame
    unsigned char checkpoint;   // kart 0's checkpoint on the last frame
    float shown;                // the difference on screen, seconds; + is behind
    float delay;                // race time it stays on screen

    void init();
    void free();
    // After the karts have moved: a split or a lap's end of kart 0 puts its
    // difference on screen; the time on screen runs down.
    void update();
    // Under the lap time, while there is a difference to show.
    void draw() const;
    // The text and colour of a difference.
    static void format(float difference, char* text, unsigned int size, float* r, float* g, float* b);
};

extern sSplits splits;

#endif
