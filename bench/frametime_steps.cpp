// What one frame draws, counted: its polygons in GL feedback mode, and each drawing step's fragments and time.

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "frametime.h"
#include "scene/scene.h"

namespace frametime {

// Polygons that reach the rasteriser in one frame of the loop, counted by
// running that frame in GL feedback mode: after culling and clipping, quads
// and polygons as Mesa hands them on. The frame is run (and simulated) like
// any other, only nothing is drawn.
long countPolygons(const std::function<void()>& frame) {
    std::vector<GLfloat> buffer(1 << 22);
    for (int attempt = 0; attempt < 4; attempt++) {
        glFeedbackBuffer((GLsizei)buffer.size(), GL_2D, buffer.data());
        glRenderMode(GL_FEEDBACK);
        frame();
        GLint n = glRenderMode(GL_RENDER);
        if (n < 0) {
            buffer.resize(buffer.size() * 4);
            continue;
        }
        long polygons = 0;
        for (GLint i = 0; i < n;) {
            GLint token = (GLint)buffer[i++];
            switch (token) {
            case GL_POLYGON_TOKEN: {
                GLint k = (GLint)buffer[i++];
                i += 2 * k;
                polygons++;
                break;
            }
            case GL_POINT_TOKEN:
            case GL_BITMAP_TOKEN:
            case GL_DRAW_PIXEL_TOKEN:
            case GL_COPY_PIXEL_TOKEN:
                i += 2;
                break;
            case GL_LINE_TOKEN:
            case GL_LINE_RESET_TOKEN:
                i += 4;
                break;
            case GL_PASS_THROUGH_TOKEN:
                i += 1;
                break;
            default:
                return -1;
            }
        }
        return polygons;
    }
    return -1;
}

// ---- fragments and time of each drawing step ----

namespace {

// The fragments a step shaded: those that passed its own stencil and depth
// tests (GL_SAMPLES_PASSED) and, where the driver counts them, the fragment
// shader's invocations, covered pixels or not.
struct StepMeter {
    PFNGLGENQUERIESPROC genQueries = nullptr;
    PFNGLBEGINQUERYPROC beginQuery = nullptr;
    PFNGLENDQUERYPROC endQuery = nullptr;
    PFNGLGETQUERYOBJECTUIVPROC queryResult = nullptr;
    bool statistics = false;
    GLuint queries[2] = {0, 0};
    bool open = false;
    std::string step;
    double t0 = 0;
    std::vector<std::string> lines;
    std::string scenario;
};
StepMeter meter;

void closeStep() {
    if (!meter.open) return;
    meter.endQuery(GL_SAMPLES_PASSED);
    if (meter.statistics) meter.endQuery(GL_FRAGMENT_SHADER_INVOCATIONS_ARB);
    glFinish();
    double ms = (monotonic() - meter.t0) * 1000;
    GLuint samples = 0, invocations = 0;
    meter.queryResult(meter.queries[0], GL_QUERY_RESULT, &samples);
    if (meter.statistics) meter.queryResult(meter.queries[1], GL_QUERY_RESULT, &invocations);
    char line[512];
    snprintf(line, sizeof line,
             "STEP {\"scenario\": \"%s\", \"step\": \"%s\", \"fragments\": %u, \"invocations\": %ld, \"ms\": %.3f}",
             meter.scenario.c_str(), meter.step.c_str(), samples, meter.statistics ? (long)invocations : -1L, ms);
    meter.lines.push_back(line);
    meter.open = false;
}

void stepHook(const char* step) {
    closeStep();
    if (!step) return;
    glFinish();
    meter.step = step;
    meter.t0 = monotonic();
    meter.beginQuery(GL_SAMPLES_PASSED, meter.queries[0]);
    if (meter.statistics) meter.beginQuery(GL_FRAGMENT_SHADER_INVOCATIONS_ARB, meter.queries[1]);
    meter.open = true;
}

}  // namespace

// One frame with every step counted and timed apart; the last step ends with the swap.
void measureSteps(const std::string& scenario, const std::function<void()>& frame) {
    meter.genQueries = (PFNGLGENQUERIESPROC)SDL_GL_GetProcAddress("glGenQueries");
    meter.beginQuery = (PFNGLBEGINQUERYPROC)SDL_GL_GetProcAddress("glBeginQuery");
    meter.endQuery = (PFNGLENDQUERYPROC)SDL_GL_GetProcAddress("glEndQuery");
    meter.queryResult = (PFNGLGETQUERYOBJECTUIVPROC)SDL_GL_GetProcAddress("glGetQueryObjectuiv");
    if (!meter.genQueries || !meter.beginQuery || !meter.endQuery || !meter.queryResult) {
        fprintf(stderr, "frametime: no occlusion queries in this GL\n");
        return;
    }
    const char* ext = (const char*)glGetString(GL_EXTENSIONS);
    meter.statistics = ext && strstr(ext, "GL_ARB_pipeline_statistics_query");
    meter.genQueries(2, meter.queries);
    meter.scenario = scenario;
    frameStepHook = stepHook;
    frame();
    closeStep();
    frameStepHook = nullptr;
    for (const std::string& l : meter.lines) printf("%s\n", l.c_str());
}

}  // namespace frametime
