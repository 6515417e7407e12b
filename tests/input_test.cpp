// Mouse deltas and recentring, and the joystick's delta interface.

#include <gtest/gtest.h>

#include <SDL/SDL.h>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/mouse.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

// A joystick with two axes and a trigger (or the given buttons), made through
// /dev/uinput. `why` says why there is none where the kernel does not offer it.
struct VirtualStick {
    int fd = -1;
    std::string why;
    const char* name = "Brontevalle test stick";

    explicit VirtualStick(std::initializer_list<int> keys = {BTN_TRIGGER}) {
        fd = open("/dev/uinput", O_WRONLY | O_NONBLOCK);
        if (fd < 0) {
            why = std::string("/dev/uinput is not usable here: ") + strerror(errno);
            return;
        }
        uinput_user_dev dev;
        memset(&dev, 0, sizeof dev);
        snprintf(dev.name, UINPUT_MAX_NAME_SIZE, "%s", name);
        dev.id.bustype = BUS_VIRTUAL;
        dev.id.vendor = 0x1234;
        dev.id.product = 0x5678;
        dev.id.version = 1;
        for (int axis : {ABS_X, ABS_Y}) {
            dev.absmin[axis] = -32768;
            dev.absmax[axis] = 32767;
        }
        bool ok = ioctl(fd, UI_SET_EVBIT, EV_KEY) == 0;
        for (int key : keys) ok = ok && ioctl(fd, UI_SET_KEYBIT, key) == 0;
        ok = ok && ioctl(fd, UI_SET_EVBIT, EV_ABS) == 0 && ioctl(fd, UI_SET_ABSBIT, ABS_X) == 0 &&
                  ioctl(fd, UI_SET_ABSBIT, ABS_Y) == 0 && write(fd, &dev, sizeof dev) == (ssize_t)sizeof dev &&
                  ioctl(fd, UI_DEV_CREATE) == 0;
        if (!ok) {
            why = std::string("/dev/uinput would not make a joystick: ") + strerror(errno);
            close(fd);
            fd = -1;
        }
    }
    ~VirtualStick() {
        if (fd >= 0) {
            ioctl(fd, UI_DEV_DESTROY);
            close(fd);
        }
    }
    // SDL's number for our stick, or -1.
    int index() const {
        for (int i = 0; i < SDL_NumJoysticks(); i++)
            if (SDL_JoystickName(i) && strstr(SDL_JoystickName(i), name)) return i;
        return -1;
    }
    void event(int type, int code, int value) {
        input_event e;
        memset(&e, 0, sizeof e);
        e.type = (unsigned short)type;
        e.code = (unsigned short)code;
        e.value = value;
        EXPECT_EQ(write(fd, &e, sizeof e), (ssize_t)sizeof e);
    }
    void push(int x, int y) {
        event(EV_ABS, ABS_X, x);
        event(EV_ABS, ABS_Y, y);
        event(EV_SYN, SYN_REPORT, 0);
    }
    void press(int key, bool down) {
        event(EV_KEY, key, down ? 1 : 0);
        event(EV_SYN, SYN_REPORT, 0);
    }
    // Opens SDL's joystick subsystem once our device has a node for it, and
    // the game's joystick on it; false where that never happens.
    bool attach() {
        SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
        // The device node may take a moment to appear.
        for (int i = 0; i < 40; i++) {
            SDL_InitSubSystem(SDL_INIT_JOYSTICK);
            if (index() >= 0) break;
            SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
            usleep(50000);
        }
        if (index() < 0) return false;
        EXPECT_EQ(index(), 0) << "another joystick is plugged in ahead of ours";
        joystick.init();
        return joystick.device != nullptr;
    }
};

// Refreshes the joystick until `done` holds (a generous limit).
template <class F> bool refreshUntil(F done) {
    for (int i = 0; i < 300; i++) {
        joystick.refresh();
        if (done()) return true;
        usleep(10000);
    }
    return false;
}

TEST(Mouse, FirstDeltaIsTheCentresDistanceFromTheCorner) {
    openWindow(640, 480);
    mouse.init();
    EXPECT_EQ(mouse.x, 320u);
    EXPECT_EQ(mouse.y, 240u);
    EXPECT_FALSE(mouse.lb);
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 320);
    EXPECT_EQ(mouse.deltay, 240);
}

TEST(Mouse, InTheMenuThePointerMovesFreely) {
    openWindow(640, 480);
    mouse.init();
    mouse.refresh(false);
    mouse.x = 400;
    mouse.y = 100;
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 80);
    EXPECT_EQ(mouse.deltay, -140);
    EXPECT_EQ(mouse.x, 400u);
    mouse.refresh(false);
    EXPECT_EQ(mouse.deltax, 0);
}

TEST(Mouse, RacingTwelvePixelsRightGiveTwelveAndTheCentreAgain) {
    openWindow(640, 480);
    mouse.init();
    mouse.refresh(true);
    mouse.x = 332;  // what the motion event stores
    mouse.refresh(true);
    EXPECT_EQ(mouse.deltax, 12);
    EXPECT_EQ(mouse.deltay, 0);
    EXPECT_EQ(mouse.x, 320u);
    EXPECT_EQ(mouse.ox, 320u);
    mouse.refresh(true);
    EXPECT_EQ(mouse.deltax, 0);
}

TEST(Mouse, ResizeMovesTheCentreOfTheNextWarp) {
    openWindow(640, 480);
    mouse.init();
    config.width = 800;
    config.height = 600;
    mouse.refresh(true);
    EXPECT_EQ(mouse.x, 400u);
    EXPECT_EQ(mouse.y, 300u);
}

TEST(Joystick, WithoutADeviceDeltasStayZeroAfterTheFirst) {
    openWindow(640, 480);
    joystick.init();
    EXPECT_EQ(joystick.x, 320u);
    joystick.refresh();
    EXPECT_EQ(joystick.deltax, 320);
    EXPECT_EQ(joystick.deltay, 240);
    joystick.refresh();
    EXPECT_EQ(joystick.deltax, 0);
    EXPECT_EQ(joystick.deltay, 0);
}

// Readings fed straight to the joystick, as SDL gives them: -32768..32767.
TEST(Joystick, AStickAtItsStopsStaysWithinTheSteeringsRange) {
    openWindow(640, 480);
    joystick.init();
    joystick.axes(0, 0);
    EXPECT_EQ(joystick.x, 32000u);
    EXPECT_EQ(joystick.y, 32000u);
    joystick.refresh();
    joystick.axes(-32768, 32767);
    EXPECT_EQ(joystick.x, 0u);
    EXPECT_EQ(joystick.y, 64000u);
    joystick.refresh();
    EXPECT_EQ(joystick.deltax, -32000);
    EXPECT_EQ(joystick.deltay, 32000);
    const std::pair<int, unsigned int> cases[] = {{-32001, 0},     {-32000, 0},     {-31999, 1},
                                                  {-1, 31999},     {1, 32001},      {31999, 63999},
                                                  {32000, 64000},  {32001, 64000},  {-40000, 0}};
    for (const auto& [reading, want] : cases) {
        joystick.axes(reading, reading);
        EXPECT_EQ(joystick.x, want) << reading;
        EXPECT_EQ(joystick.y, want) << reading;
    }
}

// With the dead zone at 0 the readings map as they always have: the centre
// plus the reading, within the stops.
TEST(Joystick, NoDeadZoneKeepsTheMappingExactly) {
    openWindow(640, 480);
    config.joystickdeadzone = 0;
    joystick.init();
    for (int reading = -40000; reading <= 40000; reading += 7) {
        int v = 32000 + reading;
        unsigned int want = (unsigned int)(v < 0 ? 0 : v > 64000 ? 64000 : v);
        joystick.axes(reading, -reading);
        ASSERT_EQ(joystick.x, want) << reading;
        ASSERT_EQ(joystick.y, 64000u - want) << reading;
    }
}

// 8 % of the travel from the centre to a stop (32000) is 2560.
TEST(Joystick, ReadingsWithinTheDeadZoneAreExactlyTheCentre) {
    openWindow(640, 480);
    config.joystickdeadzone = 8;
    joystick.init();
    for (int reading : {0, 1, -1, 300, -700, 2000, -2559, 2560, -2560}) {
        joystick.axes(reading, reading);
        EXPECT_EQ(joystick.x, 32000u) << reading;
        EXPECT_EQ(joystick.y, 32000u) << reading;
    }
    joystick.axes(2561, -2561);
    EXPECT_GT(joystick.x, 32000u);
    EXPECT_LT(joystick.y, 32000u);
    EXPECT_LE(joystick.x, 32002u);
    EXPECT_GE(joystick.y, 31998u);
}

TEST(Joystick, TheTravelBeyondTheDeadZoneIsStretchedToTheStops) {
    openWindow(640, 480);
    config.joystickdeadzone = 8;
    joystick.init();
    joystick.axes(32000, -32000);
    EXPECT_EQ(joystick.x, 64000u);
    EXPECT_EQ(joystick.y, 0u);
    joystick.axes(32767, -32768);
    EXPECT_EQ(joystick.x, 64000u);
    EXPECT_EQ(joystick.y, 0u);
    // Half way between the zone's edge and the stop is half way to the stop.
    joystick.axes(2560 + 14720, -(2560 + 14720));
    EXPECT_EQ(joystick.x, 48000u);
    EXPECT_EQ(joystick.y, 16000u);
    // Farther out is never nearer the centre.
    unsigned int last = 32000;
    for (int reading = 0; reading <= 32767; reading += 13) {
        joystick.axes(reading, 0);
        ASSERT_GE(joystick.x, last) << reading;
        last = joystick.x;
    }
    EXPECT_EQ(last, 64000u);
}

TEST(Joystick, TheWidestZoneIsThirtyPercentWhateverTheFieldHolds) {
    openWindow(640, 480);
    config.joystickdeadzone = 30;
    joystick.init();
    joystick.axes(9600, -9600);
    EXPECT_EQ(joystick.x, 32000u);
    EXPECT_EQ(joystick.y, 32000u);
    joystick.axes(9600 + 11200, 32000);
    EXPECT_EQ(joystick.x, 48000u);
    EXPECT_EQ(joystick.y, 64000u);
    config.joystickdeadzone = 100;
    joystick.axes(9600, 32000);
    EXPECT_EQ(joystick.x, 32000u);
    EXPECT_EQ(joystick.y, 64000u);
    joystick.axes(9600 + 11200, -32000);
    EXPECT_EQ(joystick.x, 48000u);
    EXPECT_EQ(joystick.y, 0u);
}

// The deltas are those of the mapped positions: a pad trembling at rest
// gives none.
TEST(Joystick, APadTremblingAtRestGivesNoDeltas) {
    openWindow(640, 480);
    config.joystickdeadzone = 8;
    joystick.init();
    joystick.axes(0, 0);
    joystick.refresh();
    for (int reading : {1200, -900, 2400, -2500, 40}) {
        joystick.axes(reading, -reading);
        joystick.refresh();
        EXPECT_EQ(joystick.deltax, 0) << reading;
        EXPECT_EQ(joystick.deltay, 0) << reading;
    }
}

TEST(Joystick, ButtonsAreHeldUntilTheNextReadingAndNoneWithoutADevice) {
    openWindow(640, 480);
    joystick.init();
    EXPECT_FALSE(joystick.firstbutton);
    EXPECT_FALSE(joystick.secondbutton);
    joystick.refresh();
    EXPECT_FALSE(joystick.firstbutton);
    EXPECT_FALSE(joystick.secondbutton);
    joystick.buttons(true, false);
    EXPECT_TRUE(joystick.firstbutton);
    EXPECT_FALSE(joystick.secondbutton);
    joystick.buttons(false, true);
    EXPECT_FALSE(joystick.firstbutton);
    EXPECT_TRUE(joystick.secondbutton);
}

// The pedal the kart takes from the pad when the joystick steers: the stick's
// y, or a held button whose pedal the kart may use.
TEST(Joystick, APedalsButtonIsTheWholePedalOnceTheKartMayUseIt) {
    openWindow(640, 480);
    config.joystickdeadzone = 8;
    joystick.init();
    joystick.axes(0, 1500);
    EXPECT_FLOAT_EQ(joystick.pedal(false, false), 0);
    joystick.axes(0, -32000);
    EXPECT_FLOAT_EQ(joystick.pedal(false, false), 45);
    joystick.axes(0, 800);
    joystick.buttons(true, false);
    EXPECT_FLOAT_EQ(joystick.pedal(true, false), 45);
    EXPECT_FLOAT_EQ(joystick.pedal(false, false), 0);  // the start has not come
    joystick.buttons(false, true);
    EXPECT_FLOAT_EQ(joystick.pedal(false, true), -45);
    EXPECT_FLOAT_EQ(joystick.pedal(false, false), 0);
    // The arrows alone leave the pedal to the stick, as they always have.
    joystick.buttons(false, false);
    EXPECT_FLOAT_EQ(joystick.pedal(true, true), 0);
    joystick.axes(0, 32000);
    EXPECT_FLOAT_EQ(joystick.pedal(true, false), -45);
}

// A virtual joystick made by the kernel, read through SDL like a real one.
TEST(Joystick, AVirtualStickPushedToItsStopsThroughSdl) {
    VirtualStick stick;
    if (!stick.why.empty()) GTEST_SKIP() << stick.why;
    openWindow(640, 480);
    SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
    // The device node may take a moment to appear.
    for (int i = 0; i < 40; i++) {
        SDL_InitSubSystem(SDL_INIT_JOYSTICK);
        if (stick.index() >= 0) break;
        SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
        usleep(50000);
    }
    if (stick.index() < 0) GTEST_SKIP() << "the kernel made the device but no joystick node appeared for SDL";
    ASSERT_EQ(stick.index(), 0) << "another joystick is plugged in ahead of ours";
    joystick.init();
    ASSERT_NE(joystick.device, nullptr);
    stick.push(-32768, 32767);
    for (int i = 0; i < 100 && joystick.x != 0u; i++) {
        usleep(10000);
        joystick.refresh();
    }
    EXPECT_EQ(joystick.x, 0u);
    EXPECT_EQ(joystick.y, 64000u);
    stick.push(0, 0);
    for (int i = 0; i < 100 && joystick.x == 0u; i++) {
        usleep(10000);
        joystick.refresh();
    }
    EXPECT_NEAR((double)joystick.x, 32000.0, 200.0);
    EXPECT_NEAR((double)joystick.y, 32000.0, 200.0);
    SDL_JoystickClose(joystick.device);
    joystick.device = nullptr;
}

// A usual pad, A and B beside the stick, made by the kernel: at rest but not
// quite centred it reads the centre, and its first two buttons are held.
TEST(Joystick, AVirtualPadAtRestReadsTheCentreAndItsButtonsThroughSdl) {
    VirtualStick pad({BTN_SOUTH, BTN_EAST});
    if (!pad.why.empty()) GTEST_SKIP() << pad.why;
    openWindow(640, 480);
    config.joystickdeadzone = 8;
    if (!pad.attach()) GTEST_SKIP() << "the kernel made the device but no joystick node appeared for SDL";
    pad.push(-32768, 32767);
    EXPECT_TRUE(refreshUntil([] { return joystick.x == 0u && joystick.y == 64000u; }));
    pad.push(1800, -2300);
    EXPECT_TRUE(refreshUntil([] { return joystick.x != 0u; }));
    EXPECT_EQ(joystick.x, 32000u);
    EXPECT_EQ(joystick.y, 32000u);
    EXPECT_FALSE(joystick.firstbutton);
    EXPECT_FALSE(joystick.secondbutton);
    pad.press(BTN_SOUTH, true);
    EXPECT_TRUE(refreshUntil([] { return joystick.firstbutton; }));
    EXPECT_FALSE(joystick.secondbutton);
    pad.press(BTN_SOUTH, false);
    pad.press(BTN_EAST, true);
    EXPECT_TRUE(refreshUntil([] { return joystick.secondbutton && !joystick.firstbutton; }));
    pad.press(BTN_EAST, false);
    EXPECT_TRUE(refreshUntil([] { return !joystick.secondbutton; }));
    SDL_JoystickClose(joystick.device);
    joystick.device = nullptr;
}

}  // namespace
