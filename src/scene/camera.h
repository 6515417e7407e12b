#ifndef BV_SCENE_CAMERA_H
#define BV_SCENE_CAMERA_H

// The eye of the race: where it stands and looks, how wide it sees, which of
// the five views is on, and the two questions every drawing module asks
// before it draws: how far is this point, and can the eye see it at all.

// Viewing modes.
const unsigned int CAMERA_DRIVER = 0;
const unsigned int CAMERA_CHASE = 1;
const unsigned int CAMERA_TRACKSIDE = 2;
const unsigned int CAMERA_HIGH = 3;
const unsigned int CAMERA_FREE = 4;

struct sGokart;

struct sCamera {
    float axmargin;
    float aymargin;
    float px, py, pz;
    float ox, oy, oz;
    float ax;
    float ay;
    float az;
    float fov;
    unsigned int mode;
    unsigned int Nmodes;
    bool setmodedelay;
    bool ignoreisinview;

    void init(unsigned int mode, float px, float py, float pz, float ax, float ay, float az, float fov);
    void setmode();
    float distance(float x, float y, float z);
    float isinview(float x, float y, float z);
    // Rotates and moves the model-view matrix into the eye's frame.
    void transform();
    // Places the eye for this frame in the current mode. target is the
    // camera as it was when the frame began; the eased modes move part of the
    // way from here towards where the mode wants the eye.
    void follow(sCamera target, const sGokart& kart);
    // The views' own placings, used by follow. The eased ones set the target
    // and say what part of the way towards it this frame goes.
    void flyfree();
    float aimhigh(sCamera& target, const sGokart& kart);
    float aimchase(sCamera& target, const sGokart& kart);
    void sitindriver(const sGokart& kart);
    void standtrackside(const sGokart& kart);
    void ease(const sCamera& target, float f);
    void wrapangles();
};

extern sCamera camera;

// The sway of the driver's view; kept from race to race.
extern float camera_lag;

// Heading from point p towards point q, the way the camera measures headings:
// in (-90, 270), 0 looking along -z.
float cameraheading(float px, float pz, float qx, float qz);

#endif
