#ifndef BV_SCENE_LENSFLARE_H
#define BV_SCENE_LENSFLARE_H

// The sun in the sky and the flare it throws into the lens: a glow round the
// sun and six hexagons on the line from the sun through the middle of the
// screen. How much of the sun shows is read from the depth buffer, so
// whatever stands in front of it dims or hides the flare.

struct sLensflare {
    unsigned int flareTexture[2];  // the sun, the glow
    // Builds up and dies away over a few frames: each frame adds to what the
    // last one left.
    float brightness;
    // The sun on the screen: window coordinates and depth, then x and y in -1..1.
    double sx, sy, sz;

    void init();
    // With the finished frame's depth buffer and the scene's matrices still set.
    void calc();
    // In the scene's matrices, every race frame.
    void drawsun();
    // With the identity model-view, after calc.
    void draw();
    void flare(float pos, float size, float r, float g, float b);
    void free();

    // Whether the 81 samples round (sx, sy) in a W x H viewport are read
    // pixel by pixel or in one read of the block that holds them; both give
    // the same depths.
    bool readblock = true;
};

extern sLensflare lensflare;

#endif
