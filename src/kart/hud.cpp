// The head-up display: the speed dial and its needle.

#include "kart/gokart.h"

#include <cmath>
#include <GL/gl.h>

#include "scene/shader.h"
#include "shell/main.h"

void sGokart::drawhud() {
    const float h = 0.09049479f;
    resizeGLwindow2D(1.33f, 1.0f);
    glPushMatrix();
    glTranslatef(1.23f, 0.1f, 0);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.hudTexture);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    auto quad = [h]() {
        glColor4f(1, 1, 1, 0.9f);
        unitquad(-h, -h, h, h, 1, 3);  // begun at the top-left corner, the seam the dial was drawn with
    };
    quad();
    // The needle turns clockwise, 320 degrees at 25 units per second, and the
    // same way whichever way the kart rolls.
    glRotatef(-fabsf(ups) / 25.0f * 320.0f, 0, 0, 1);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.needleTexture);
    quad();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glPopMatrix();
}
