#ifndef BV_SCENE_CAMERA_H
#define BV_SCENE_CAMERA_H

// The race camera: where the eye stands and looks, how wide it sees, which
// viewing mode is on, and the question every drawing module asks it first.
struct sCamera {
    float axmargin;  // half-width of the visible cone about the pitch, degrees
    float aymargin;  // half-width of the visible cone about the heading, degrees
    float px, py, pz;
    float ox, oy, oz;  // the eye at the end of the previous frame
    float ax;          // pitch, negative looks down
    float ay;          // heading about the vertical axis
    float az;          // roll
    float fov;
    unsigned int mode;
    unsigned int Nmodes;
    bool setmodedelay;
    bool ignoreisinview;  // answer 6.0 to every question (the menu's kart preview)

    // Straight-line distance from the eye.
    float distance(float x, float y, float z);
    // -1 when the point is outside the visible cone, 1 when it is very near
    // the eye, else its distance, which doubles as the level-of-detail distance.
    float isinview(float x, float y, float z);
};

extern sCamera camera;

#endif
