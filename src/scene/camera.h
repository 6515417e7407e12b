#ifndef BV_SCENE_CAMERA_H
#define BV_SCENE_CAMERA_H

// The race camera. For now only its field of view, which the window's
// perspective projection reads.
struct sCamera {
    float fov;
};

extern sCamera camera;

#endif
