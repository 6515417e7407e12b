#ifndef BV_SHELL_MAIN_H
#define BV_SHELL_MAIN_H

#include <SDL/SDL.h>

// The program's shell: start-up, the event and frame loop, shutdown, and the
// small window helpers every drawing module uses.

extern unsigned int splash_t, splash_0, splash_1;
extern SDL_Surface* surface;

[[noreturn]] void quit(int status);
// The window's icon, square RGBA rows from the top; the game's own binary
// sets it before start-up, programs that drive the pieces may leave it out.
extern const unsigned char* windowIconPixels;
extern int windowIconSize;
bool createGLwindow();
void killGLwindow();
void initGL();
void resizeGLwindow2D(float w, float h);
// The bound texture over the rectangle (x0, y0)-(x1, y1): its bottom row at
// y0, and at y1 the row top (1 for the whole picture). The corners go round
// counter-clockwise from corner first, 0 being (x0, y0): the quad is split
// into two triangles by that order, so a caller keeps the start its pixels
// were made with.
void unitquad(float x0, float y0, float x1, float y1, float top = 1, int first = 0);
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
