// The quicker ways the race frame draws, each against the plain way on the
// same input: shadow places with the turns worked out once per model, the
// stencil shadows gathered into one draw, and skid marks that skip what has
// faded out. Same places, same stencil, same pixels, same state after.

#include <gtest/gtest.h>

#include <GL/gl.h>
#include <dirent.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "assets/3ds.h"
#include "assets/texture.h"
#include "effects_fixtures.h"
#include "kart/gokart.h"
#include "scene/shader.h"
#include "shell/bvconfig.h"
#include "support/bvtest_fixtures.h"
#include "support/glreads.h"

namespace {

const int W = 200, H = 150;

std::vector<std::string> gameModels() {
    std::vector<std::string> files;
    std::string dir = std::string(BV_GAME_DIR) + "/Data/Models";
    if (DIR* d = opendir(dir.c_str())) {
        while (dirent* e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() > 4 && n.substr(n.size() - 4) == ".3DS") files.push_back(dir + "/" + n);
        }
        closedir(d);
    }
    return files;
}

bool sameBits(float a, float b) {
    return memcmp(&a, &b, sizeof a) == 0;
}

// Looking straight down on the ground round (cx, cz), `size` across.
void topView(float cx, float cz, float size) {
    bvtest::topView(W, H, cx, cz, size / 2, size / 2 * H / W, 100);
}

std::vector<unsigned char> stencil() {
    return bvtest::stencil(W, H);
}

std::vector<float> depth() {
    std::vector<float> p((size_t)W * H);
    glReadPixels(0, 0, W, H, GL_DEPTH_COMPONENT, GL_FLOAT, p.data());
    return p;
}

// Everything of the GL state a shadow pass touches.
struct State {
    GLboolean stencil, cull, depth, mask[4];
    GLint func, ref, valuemask, fail, zfail, zpass;
    GLfloat colour[4];
    bool operator==(const State& o) const {
        return stencil == o.stencil && cull == o.cull && depth == o.depth && memcmp(mask, o.mask, sizeof mask) == 0 &&
               func == o.func && ref == o.ref && valuemask == o.valuemask && fail == o.fail && zfail == o.zfail &&
               zpass == o.zpass && memcmp(colour, o.colour, sizeof colour) == 0;
    }
};

State state() {
    State s;
    s.stencil = glIsEnabled(GL_STENCIL_TEST);
    s.cull = glIsEnabled(GL_CULL_FACE);
    s.depth = glIsEnabled(GL_DEPTH_TEST);
    glGetBooleanv(GL_COLOR_WRITEMASK, s.mask);
    glGetIntegerv(GL_STENCIL_FUNC, &s.func);
    glGetIntegerv(GL_STENCIL_REF, &s.ref);
    glGetIntegerv(GL_STENCIL_VALUE_MASK, &s.valuemask);
    glGetIntegerv(GL_STENCIL_FAIL, &s.fail);
    glGetIntegerv(GL_STENCIL_PASS_DEPTH_FAIL, &s.zfail);
    glGetIntegerv(GL_STENCIL_PASS_DEPTH_PASS, &s.zpass);
    glGetFloatv(GL_CURRENT_COLOR, s.colour);
    return s;
}

class FastPaths : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(effects::linkGameContent()) << "the game's content is built with the game";
        effects::openGameWindow(W, H);
        LightPosition[0] = -500;
        LightPosition[1] = 750;
        LightPosition[2] = -200;
        LightPosition[3] = 1;
    }
    bvtest::ScratchDir dir;
};

}  // namespace

TEST(ShadowPlacement, PutsEveryVertexOfEveryModelWhereShadowplaceDoes) {
    std::vector<std::string> files = gameModels();
    ASSERT_GT(files.size(), 10u);
    const unsigned int orders[6][3] = {{3, 1, 3}, {2, 0, 1}, {0, 1, 3}, {3, 3, 3}, {0, 1, 2}, {1, 2, 0}};
    const float turns[5][3] = {{0, 0, 0}, {-50, 217.5f, 12.6f}, {35.25f, -179.9f, -7}, {720.3f, 91, 45}, {-3, 0.1f, 359}};
    long vertices = 0, differences = 0;
    for (const std::string& file : files) {
        t3DModel model;
        CLoad3DS reader;
        ASSERT_TRUE(reader.Import3DS(&model, file.c_str())) << file;
        for (const auto& order : orders)
            for (const auto& t : turns) {
                const float x = 3.5f, y = 0.11f, z = -12.25f;
                sShadowPlacement place(x, y, z, t[0], t[1], t[2], order[0], order[1], order[2]);
                for (const t3DObject& object : model.pObject)
                    for (int v = 0; v < object.numOfVerts; v++) {
                        tVector3 a = place(object.pVerts[v]);
                        tVector3 b = shadowplace(object.pVerts[v], x, y, z, t[0], t[1], t[2], order[0], order[1],
                                                 order[2]);
                        vertices++;
                        if (!sameBits(a.x, b.x) || !sameBits(a.y, b.y) || !sameBits(a.z, b.z)) differences++;
                    }
            }
        Free3DModel(&model);
    }
    EXPECT_GT(vertices, 10000);
    EXPECT_EQ(differences, 0);
}

TEST_F(FastPaths, ABatchOfShadowsMarksTheStencilAsTrianglesOneByOneDo) {
    s3DS models[3];
    models[0].load("Data/Models/LOchasis.3DS", "NO_LOAD");
    models[1].load("Data/Models/SLOgokart.3DS", "NO_LOAD");
    models[2].load("Data/Models/barrel.3DS", "NO_LOAD");
    // Scattered, turned every way, some overlapping.
    auto cast = [&]() {
        for (int i = 0; i < 12; i++) {
            s3DS& m = models[i % 3];
            m.castshadow(0, LightPosition[0], LightPosition[1], LightPosition[2], -3.0f + 0.6f * i, 0.11f,
                         (float)(i % 4) - 1.5f, -20.0f * i, 33.0f * i, 7.0f * i, i % 2 ? 2 : 3, i % 2 ? 0 : 1,
                         i % 2 ? 1 : 3);
        }
        castShadow(-4, 1, -2, 4, 1, -2, 0, 0.5f, 2, 0, LightPosition[0], LightPosition[1], LightPosition[2]);
    };
    auto frame = [&](bool batch) {
        topView(0, 0, 10);
        glClearColor(0.25f, 0.5f, 0.75f, 1);
        glClearStencil(0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        glColor4f(0.5f, 0.25f, 1, 0.75f);
        if (batch) beginShadowBatch();
        cast();
        if (batch) endShadowBatch();
        glFinish();
    };

    for (unsigned int projectors : {0u, 1u}) {
        config.shadowprojectors = projectors;
        frame(false);
        std::vector<unsigned char> s1 = stencil(), c1 = effects::frame();
        std::vector<float> d1 = depth();
        State after1 = state();
        frame(true);
        std::vector<unsigned char> s2 = stencil(), c2 = effects::frame();
        std::vector<float> d2 = depth();
        State after2 = state();

        long marked = 0;
        for (unsigned char v : s1) marked += v != 0;
        EXPECT_GT(marked, 500) << "the shadows must fall in view";
        EXPECT_LT(marked, (long)s1.size() / 2);
        EXPECT_TRUE(s1 == s2) << "projectors " << projectors;
        EXPECT_TRUE(c1 == c2) << "projectors " << projectors;
        EXPECT_TRUE(d1 == d2) << "projectors " << projectors;
        EXPECT_TRUE(after1 == after2) << "projectors " << projectors;
        EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
    }
    config.shadowprojectors = 0;
    for (s3DS& m : models) m.free();
}

TEST_F(FastPaths, AnEmptyBatchLeavesTheStateAsItFoundIt) {
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_STENCIL_TEST);
    glStencilFunc(GL_EQUAL, 0, 1);
    glStencilOp(GL_KEEP, GL_INCR, GL_KEEP);
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE);
    glColor4f(0.1f, 0.2f, 0.3f, 0.4f);
    State before = state();
    beginShadowBatch();
    endShadowBatch();
    EXPECT_TRUE(state() == before);
    // One triangle sets it the way a single shadow does.
    beginShadowBatch();
    castShadow(0, 1, 0, 1, 1, 0, 0, 1, 1, 0, LightPosition[0], LightPosition[1], LightPosition[2]);
    endShadowBatch();
    State batched = state();
    glDisable(GL_CULL_FACE);
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE);
    castShadow(0, 1, 0, 1, 1, 0, 0, 1, 1, 0, LightPosition[0], LightPosition[1], LightPosition[2]);
    EXPECT_TRUE(state() == batched);
    EXPECT_EQ(glGetError(), (GLenum)GL_NO_ERROR);
}

// The skid marks as they were always drawn: every slot but the one being written.
static void allSlides(const sGokart& k) {
    const unsigned int n = config.nslides;
    const sSlide* rings[4] = {k.lfSlide, k.rfSlide, k.lrSlide, k.rrSlide};
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, gokartstaticdata.skidTexture);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glBegin(GL_QUADS);
    for (unsigned int i = 0; i < n; i++) {
        if (i == k.CURRENTslide) continue;
        for (const sSlide* ring : rings) {
            const sSlide& m = ring[i];
            glColor4f(1, 1, 1, m.a[0]);
            glTexCoord2f(0, 0);
            glVertex3f(m.x[0], 0, m.z[0]);
            glTexCoord2f(1, 0);
            glVertex3f(m.x[1], 0, m.z[1]);
            glColor4f(1, 1, 1, m.a[1]);
            glTexCoord2f(1, 1);
            glVertex3f(m.x[2], 0, m.z[2]);
            glTexCoord2f(0, 1);
            glVertex3f(m.x[3], 0, m.z[3]);
        }
    }
    glEnd();
    glDisable(GL_BLEND);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_DEPTH_TEST);
}

TEST_F(FastPaths, SkidMarksLeaveOutOnlyWhatHasFadedAway) {
    floadTextureTGA("Data/Textures/Skid.tga", &gokartstaticdata.skidTexture);
    ASSERT_NE(gokartstaticdata.skidTexture, 0u);
    config.nslides = 128;
    sGokart& k = gokart[0];
    memset(k.lfSlide, 0, sizeof k.lfSlide);
    memset(k.rfSlide, 0, sizeof k.rfSlide);
    memset(k.lrSlide, 0, sizeof k.lrSlide);
    memset(k.rrSlide, 0, sizeof k.rrSlide);
    k.CURRENTslide = 77;
    sSlide* rings[4] = {k.lfSlide, k.rfSlide, k.lrSlide, k.rrSlide};
    // Overlapping marks of every kind: gone at both ends, at one end, faded
    // just below nothing, and fresh.
    const float alphas[6][2] = {{0, 0}, {0, 0.08f}, {0.05f, 0}, {-0.0004f, -0.0001f}, {0.1f, 0.09f}, {-0.0002f, 0.03f}};
    for (unsigned int i = 0; i < config.nslides; i++)
        for (int w = 0; w < 4; w++) {
            sSlide& m = rings[w][i];
            float x = -4 + 0.06f * i + 0.3f * w, z = -2 + 0.03f * i - 0.2f * w;
            // Both windings: whichever way round, a mark that shows must stay.
            const float d = w % 2 ? 0.6f : -0.6f;
            float xs[4] = {x, x + 0.3f, x + 0.4f, x + 0.05f}, zs[4] = {z, z + 0.05f, z + d, z + d - 0.05f};
            for (int c = 0; c < 4; c++) {
                m.x[c] = xs[c];
                m.z[c] = zs[c];
            }
            m.a[0] = alphas[(i + w) % 6][0];
            m.a[1] = alphas[(i + w) % 6][1];
        }
    auto frame = [&](bool quick) {
        topView(0, 0, 10);
        glClearColor(0.6f, 0.55f, 0.5f, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (quick)
            k.drawslides();
        else
            allSlides(k);
        glFinish();
        return effects::frame();
    };
    std::vector<unsigned char> plain = frame(false);
    State plainState = state();
    std::vector<unsigned char> quick = frame(true);
    State quickState = state();
    long changed = 0;
    for (size_t i = 0; i < plain.size(); i += 3) changed += plain[i] != 153;  // 0.6 of 255
    EXPECT_GT(changed, 1000) << "the marks must show";
    EXPECT_TRUE(plain == quick);
    EXPECT_TRUE(plainState == quickState);
    freeTexture(&gokartstaticdata.skidTexture);
}
