// The back buffer read back (colours, stencil), kept as a picture, and a view straight down on the ground.
#ifndef BV_TESTS_SUPPORT_GLREADS_H
#define BV_TESTS_SUPPORT_GLREADS_H

#include <GL/gl.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"

namespace bvtest {

// The whole back buffer, RGB rows from the bottom.
inline std::vector<unsigned char> frame() {
    std::vector<unsigned char> p(config.width * config.height * 3);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, config.width, config.height, GL_RGB, GL_UNSIGNED_BYTE, p.data());
    return p;
}

// Keeps what the test saw, as TGA in `folder` beside the build, for a person to look at.
inline void keepShot(const std::string& folder, const std::string& name) {
    std::vector<unsigned char> p = frame();
    for (size_t i = 0; i < p.size(); i += 3) std::swap(p[i], p[i + 2]);
    std::string dir = std::string(BV_GAME_DIR) + "/../tests/" + folder;
    std::filesystem::create_directories(dir);
    writeTGA(dir + "/" + name + ".tga", config.width, config.height, 24, p);
}

// Looking straight down on the ground round (cx, cz) in a w x h viewport,
// halfx and halfz metres each way: window x grows with world x, window y
// with -z; depth is how far above and below the eye's plane it sees.
inline void topView(int w, int h, float cx, float cz, float halfx, float halfz, float depth) {
    glViewport(0, 0, w, h);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(cx - halfx, cx + halfx, -cz - halfz, -cz + halfz, -depth, depth);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glRotatef(90, 1, 0, 0);
}

// The stencil of the w x h rectangle at the bottom left, rows from the bottom.
inline std::vector<unsigned char> stencil(int w, int h) {
    std::vector<unsigned char> s((size_t)w * h);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, w, h, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, s.data());
    return s;
}

}  // namespace bvtest

#endif
