#ifndef BV_SHELL_MAIN_H
#define BV_SHELL_MAIN_H

#include <SDL/SDL.h>

// The program's shell: start-up, the event and frame loop, shutdown, and the
// small window helpers every drawing module uses.

extern unsigned int splash_t, splash_0, splash_1;
extern SDL_Surface* surface;

[[noreturn]] void quit(int status);
bool createGLwindow();
void killGLwindow();
void initGL();
void resizeGLwindow2D(float w, float h);
void resizeGLwindow3D();
void splashScreen();
// Filled segments of the loading bar on the screen now; -1 when something
// else has been shown since (the game's frames) or nothing yet.
extern long splashSegmentsShown;
void drawSplashSegment(unsigned long i);
void drawGL();
void wireframe();
void solid();
unsigned int qbGetFileSize(const char* path);

// The pieces of main(), apart so that they can be driven one by one.
void startup();
void handleEvent(const SDL_Event& event, bool& done);
// Handles the queued events, holding a release that follows its press in the
// same pass over to the next one.
void pumpEvents(bool& done);
void looppass(bool& done);
unsigned long mainloop();  // returns the number of frames drawn
[[noreturn]] void shutdown();
[[noreturn]] void gamemain();

#endif
