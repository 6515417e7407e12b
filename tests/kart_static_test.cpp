// What all karts share: the driving constants, the palette, the part models
// at three levels of detail with their borrowed textures, the samples and
// their loop modes, and what free() releases and keeps.

#include <gtest/gtest.h>
#include <unistd.h>

#include <GL/gl.h>

#include <cstring>

#include "kart_fixtures.h"
#include "writers/writer3ds.h"

using namespace kartfix;
namespace w = writer3ds;

namespace {

const char* PARTS[11] = {"armd",  "armu",  "body",    "chasis",    "foot",         "frontwheel",
                         "head",  "pedal", "plastic", "rearwheel", "steeringwheel"};

// One flat panel facing the viewer (the file's x-z plane becomes the game's
// x-y plane), textured over its whole face with `texture`.
w::Model panel(const std::string& texture) {
    w::Model m;
    int mat = m.material("Paint", 255, 255, 255, texture);
    w::Object& o = m.object("Panel", mat);
    o.vertex(-2, 0, -2, 0, 0);
    o.vertex(2, 0, -2, 1, 0);
    o.vertex(2, 0, 2, 1, 1);
    o.vertex(-2, 0, 2, 0, 1);
    o.quad(0, 1, 2, 3);
    return m;
}

void writeAllParts() {
    for (const char* part : PARTS)
        for (const char* level : {"LO", "ME", "HI"})
            ASSERT_TRUE(w::write3DS(panel(std::string(level) == "LO" ? "red.tga" : "blue.tga"),
                                    std::string("Data/Models/") + level + part + ".3DS"));
    ASSERT_TRUE(w::write3DS(panel(""), "Data/Models/SLOgokart.3DS"));
    bvtest::writeSolidTGA("Data/Textures/red.tga", 4, 4, 250, 10, 10);
    bvtest::writeSolidTGA("Data/Textures/blue.tga", 4, 4, 10, 10, 250);
    for (const char* t : {"Hud", "Needle", "Shadowmap", "Fwshadowmap", "Skid", "Dheadtv"})
        bvtest::writeSolidTGA(std::string("Data/Textures/") + t + ".tga", 4, 4, 128, 128, 128, 255);
}

class KartStatic : public KartTest {};

}  // namespace

TEST_F(KartStatic, DerivedConstantsComeOutExactly) {
    gokartstaticdata.init();
    const sGokartStaticData& s = gokartstaticdata;
    EXPECT_EQ(s.wheelcircumference, 0.69115037f);
    EXPECT_EQ(s.wheelaxperturn, 180.0f);
    EXPECT_EQ(s.chasiswidth, 1.24f);
    EXPECT_EQ(s.chasisfront, 1.364f);
    EXPECT_EQ(s.chasisback, -0.154f);
    EXPECT_EQ(s.wheeltrack, 0.375f);
    EXPECT_EQ(s.wheelbase, 1.2f);
    EXPECT_EQ(s.wheelwidth, 0.19f);
    EXPECT_EQ(s.wheelradius, 0.11f);
    EXPECT_EQ(s.frontwheelwidth, 0.11f);
    EXPECT_EQ(s.maxturn, 45.0f);
    EXPECT_EQ(s.turn, 45.0f);
    EXPECT_EQ(s.deturn, 90.0f);
    EXPECT_EQ(s.topspeed, 25.0f);
    EXPECT_EQ(s.acceleration, 20.0f);
    EXPECT_EQ(s.decceleration, 22.0f);
    EXPECT_EQ(s.resistance, 1.25f);
    EXPECT_EQ(s.grip, 5.0f);
    EXPECT_EQ(s.overarmslaengde, 0.3f);
    EXPECT_EQ(s.underarmslaengde, 0.33f);
}

TEST_F(KartStatic, PaletteHasTwentyFourNamedColours) {
    gokartstaticdata.init();
    const sGokartStaticData& s = gokartstaticdata;
    EXPECT_EQ(sizeof s.palette / sizeof s.palette[0], 24u);
    EXPECT_EQ(sizeof s.paletteName / sizeof s.paletteName[0], 24u);
    EXPECT_STREQ(s.paletteName[0], "red");
    EXPECT_STREQ(s.paletteName[23], "red");
    EXPECT_STREQ(s.paletteName[1], "orange");
    EXPECT_STREQ(s.paletteName[10], "turquoise");
    EXPECT_STREQ(s.paletteName[20], "magenta");
    // 196, not 192.
    EXPECT_EQ(s.palette[3][1], 196);
    EXPECT_EQ(s.palette[5][0], 196);
    EXPECT_EQ(s.palette[19][0], 196);
    EXPECT_EQ(s.palette[23][0], 255);
    EXPECT_EQ(s.palette[23][1], 0);
    EXPECT_EQ(s.palette[23][2], 64);
    EXPECT_EQ(s.palette[12][0], 0);
    EXPECT_EQ(s.palette[12][1], 255);
    EXPECT_EQ(s.palette[12][2], 255);
}

TEST_F(KartStatic, MediumAndHighModelsDrawWithTheLowModelsTextures) {
    writeAllParts();
    gokartstaticdata.init();
    glViewport(0, 0, 64, 64);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(-1, 1, -1, 1, -10, 10);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    for (s3DS* model : {&gokartstaticdata.LOarmd3DS, &gokartstaticdata.MEarmd3DS, &gokartstaticdata.HIarmd3DS,
                        &gokartstaticdata.MEsteeringwheel3DS, &gokartstaticdata.HIplastic3DS}) {
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        glColor3ub(255, 255, 255);
        model->drawlist();
        glFinish();
        bvtest::Pixel p = bvtest::readPixel(32, 32);
        EXPECT_GT(p.r, 200);
        EXPECT_LT(p.b, 50);
    }
    // Only the LO files' textures were loaded: the ME and HI files name blue.tga.
    std::string log = bvtest::readFile("Data/blackbox.bvd");
    EXPECT_NE(log.find("Loading texture f : Data/Textures/red.tga [OK]"), std::string::npos);
    EXPECT_EQ(log.find("blue.tga"), std::string::npos);
    for (const char* part : PARTS)
        for (const char* level : {"LO", "ME", "HI"})
            EXPECT_NE(log.find(std::string("Loading model f : Data/Models/") + level + part + ".3DS [OK]"),
                      std::string::npos)
                << level << part;
    EXPECT_NE(log.find("Loading model f : Data/Models/SLOgokart.3DS [OK]"), std::string::npos);
}

TEST_F(KartStatic, SamplesAreLoggedAndMissingOnesLeaveNothing) {
    bvtest::writeTone("Data/Sounds/Engine.wav", 200, 0.2);
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    gokartstaticdata.init();
    EXPECT_EQ(gokartstaticdata.collission, nullptr);
    EXPECT_NE(gokartstaticdata.engine, nullptr);
    EXPECT_EQ(gokartstaticdata.tire, nullptr);
    std::string log = bvtest::readFile("Data/blackbox.bvd");
    EXPECT_NE(log.find("Loading soundeffects f : Data/Sounds/Collission.wav [  ]"), std::string::npos);
    EXPECT_NE(log.find("Loading soundeffects f : Data/Sounds/Engine.wav [OK]"), std::string::npos);
    EXPECT_NE(log.find("Loading soundeffects f : Data/Sounds/Tire.wav [  ]"), std::string::npos);
    FSOUND_Close();
}

TEST_F(KartStatic, EngineAndTyreLoopWhileTheCollisionPlaysOnce) {
    for (const char* s : {"Collission", "Engine", "Tire"})
        bvtest::writeTone(std::string("Data/Sounds/") + s + ".wav", 300, 0.15);
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    gokartstaticdata.init();
    int collision = FSOUND_PlaySound(FSOUND_FREE, gokartstaticdata.collission);
    int engine = FSOUND_PlaySound(FSOUND_FREE, gokartstaticdata.engine);
    int tyre = FSOUND_PlaySound(FSOUND_FREE, gokartstaticdata.tire);
    ASSERT_GE(collision, 0);
    ASSERT_GE(engine, 0);
    ASSERT_GE(tyre, 0);
    // Four times the collision's length, in the mixer's own time.
    ASSERT_TRUE(capture.until(0.6));
    EXPECT_FALSE(FSOUND_IsPlaying(collision));
    EXPECT_TRUE(FSOUND_IsPlaying(engine));
    EXPECT_TRUE(FSOUND_IsPlaying(tyre));
    FSOUND_Close();
}

TEST_F(KartStatic, FreeKeepsTheNeedleAndThePlasticModels) {
    writeAllParts();
    bvtest::writeTone("Data/Sounds/Engine.wav", 200, 0.5);
    bvtest::SoundCapture capture;
    ASSERT_TRUE(FSOUND_Init(44100, 32, 0));
    gokartstaticdata.init();
    int engine = FSOUND_PlaySound(FSOUND_FREE, gokartstaticdata.engine);
    ASSERT_TRUE(FSOUND_IsPlaying(engine));
    const sGokartStaticData& s = gokartstaticdata;
    unsigned int hud = s.hudTexture, needle = s.needleTexture, skid = s.skidTexture;
    unsigned int red = s.LOarmd3DS.Texture[0], plasticRed = s.LOplastic3DS.Texture[0];
    unsigned int armList = s.LOarmd3DS.LIST, plasticLists[3] = {s.LOplastic3DS.LIST, s.MEplastic3DS.LIST,
                                                                s.HIplastic3DS.LIST};
    ASSERT_TRUE(glIsTexture(hud));
    ASSERT_TRUE(glIsTexture(needle));
    ASSERT_TRUE(glIsList(armList));
    gokartstaticdata.free();
    EXPECT_FALSE(glIsTexture(hud));
    EXPECT_FALSE(glIsTexture(skid));
    EXPECT_FALSE(glIsTexture(red));
    EXPECT_FALSE(glIsList(armList));
    EXPECT_TRUE(glIsTexture(needle));
    EXPECT_TRUE(glIsTexture(plasticRed));
    for (unsigned int list : plasticLists) EXPECT_TRUE(glIsList(list));
    EXPECT_FALSE(FSOUND_IsPlaying(engine));
    FSOUND_Close();
}
