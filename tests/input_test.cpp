// Mouse deltas and recentring, and the joystick's delta interface.

#include <gtest/gtest.h>

#include <SDL/SDL.h>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "shell/bvconfig.h"
#include "shell/joystick.h"
#include "shell/mouse.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

namespace {

// A joystick with two axes and a trigger, made through /dev/uinput. `why`
// says why there is none where the kernel does not offer it.
struct VirtualStick {
    int fd = -1;
    std::string why;
    const char* name = "Brontevalle test stick";

    VirtualStick() {
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
        bool ok = ioctl(fd, UI_SET_EVBIT, EV_KEY) == 0 && ioctl(fd, UI_SET_KEYBIT, BTN_TRIGGER) == 0 &&
                  ioctl(fd, UI_SET_EVBIT, EV_ABS) == 0 && ioctl(fd, UI_SET_ABSBIT, ABS_X) == 0 &&
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
};

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

}  // namespace
