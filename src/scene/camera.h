#ifndef BV_SCENE_CAMERA_H
#define BV_SCENE_CAMERA_H

// The race camera. For now only its record: the window's perspective reads the
// field of view and the karts' sound reads where the eye is and was.
struct sCamera {
    float axmargin, aymargin;
    float px, py, pz;
    float ox, oy, oz;
    float ax, ay, az;
    float fov;
    unsigned int mode;
    unsigned int Nmodes;
    bool setmodedelay;
    bool ignoreisinview;
};

extern sCamera camera;

#endif
