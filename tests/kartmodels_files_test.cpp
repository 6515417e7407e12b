// The generated models as files: the names the game loads, loading through
// the game's own reader, triangle budgets, materials shared across the levels
// of detail, the pictures they name, and where each kart part sits in its frame.

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "kartmodels_fixtures.h"

using namespace kartmodels;

namespace {

class KartModelsFiles : public ::testing::Test {
protected:
    void SetUp() override {
        blackbox.init("Data/blackbox.bvd", false);
        bvtest::openWindow(64, 64);
        writeModelsAndPictures();
    }
    void TearDown() override {
        for (auto& m : models) m.second.free();
    }

    // Loads a model once, as the game does: LO kart parts, the silhouette,
    // the sky and the roadside models with their pictures, ME and HI without.
    s3DS& model(const std::string& name) {
        auto it = models.find(name);
        if (it != models.end()) return it->second;
        s3DS& m = models[name];
        m = {};
        bool borrows = name.rfind("ME", 0) == 0 || name.rfind("HI", 0) == 0;
        m.load(modelPath(name).c_str(), borrows ? "NO_LOAD" : "Data/Textures/");
        return m;
    }

    std::string log() { return bvtest::readFile("Data/blackbox.bvd"); }

    bvtest::ScratchDir dir;
    std::map<std::string, s3DS> models;
};

std::vector<std::string> kartNames(const char* level) {
    std::vector<std::string> names;
    for (const char* part : modelgen::KART_PARTS) names.push_back(std::string(level) + part);
    return names;
}

}  // namespace

TEST_F(KartModelsFiles, TheFilesAreTheOnesTheGameAsksFor) {
    std::vector<std::string> wanted = {"tfinish", "camera",  "camerastand", "adboard",   "barrel", "barrelt",
                                       "container", "barrel2", "barrel2t",  "nature", "container2", "ad",
                                       "sign1",   "sign2",   "sign3",       "sign4",     "sky",    "SLOgokart"};
    for (const char* part : {"armd", "armu", "body", "chasis", "foot", "frontwheel", "head", "pedal", "plastic",
                             "rearwheel", "steeringwheel"})
        for (const char* level : {"LO", "ME", "HI"}) wanted.push_back(std::string(level) + part);
    EXPECT_EQ(wanted.size(), 51u);
    for (const std::string& name : wanted)
        EXPECT_TRUE(bvtest::fileExists("Data/Models/" + name + ".3DS")) << name;
    size_t files = 0;
    for (const auto& e : std::filesystem::directory_iterator("Data/Models")) {
        files++;
        EXPECT_EQ(e.path().extension(), ".3DS") << e.path();
    }
    EXPECT_EQ(files, wanted.size());
}

TEST_F(KartModelsFiles, EveryModelLoadsThroughTheGamesReader) {
    for (const std::string& name : modelgen::modelNames()) {
        s3DS& m = model(name);
        EXPECT_GT(m.g_3DModel.numOfObjects, 0) << name;
        EXPECT_GT(triangles(m), 0) << name;
        for (const t3DObject& o : m.g_3DModel.pObject) {
            // Normals come out finite only when every vertex belongs to a
            // face of some size.
            for (int i = 0; i < o.numOfVerts; i++)
                ASSERT_TRUE(std::isfinite(o.pNormals[i].x) && std::isfinite(o.pNormals[i].y) &&
                            std::isfinite(o.pNormals[i].z))
                    << name << " / " << o.strName << " vertex " << i;
        }
    }
    std::string text = log();
    EXPECT_EQ(text.find(" [  ]"), std::string::npos) << text;
    EXPECT_NE(text.find("Loading model f : Data/Models/LOplastic.3DS [OK]"), std::string::npos) << text;
    EXPECT_NE(text.find("Loading texture f : Data/Textures/Kartpaint.tga [OK]"), std::string::npos) << text;
}

TEST_F(KartModelsFiles, TriangleBudgets) {
    const int budget[3] = {60, 250, 1000};
    for (int level = 0; level < 3; level++)
        for (const std::string& name : kartNames(modelgen::KART_LEVELS[level])) {
            int n = triangles(model(name));
            EXPECT_LE(n, budget[level]) << name;
            std::printf("%-18s %4d triangles\n", name.c_str(), n);
        }
    // Each level is worth its name: no higher level has fewer triangles.
    for (const char* part : modelgen::KART_PARTS) {
        int lo = triangles(model(std::string("LO") + part)), me = triangles(model(std::string("ME") + part)),
            hi = triangles(model(std::string("HI") + part));
        EXPECT_LT(lo, me) << part;
        EXPECT_LT(me, hi) << part;
    }
    EXPECT_LE(triangles(model("SLOgokart")), 120);
    for (const std::string& name : modelgen::modelNames())
        if (name.size() < 3 || (name.rfind("LO", 0) && name.rfind("ME", 0) && name.rfind("HI", 0)))
            std::printf("%-18s %4d triangles\n", name.c_str(), triangles(model(name)));
}

TEST_F(KartModelsFiles, TheThreeLevelsOfAPartListTheSameMaterials) {
    for (const char* part : modelgen::KART_PARTS) {
        const t3DModel& lo = model(std::string("LO") + part).g_3DModel;
        for (const char* level : {"ME", "HI"}) {
            const t3DModel& other = model(level + std::string(part)).g_3DModel;
            ASSERT_EQ(other.numOfMaterials, lo.numOfMaterials) << level << part;
            for (int i = 0; i < lo.numOfMaterials; i++) {
                EXPECT_STREQ(other.pMaterials[i].strName, lo.pMaterials[i].strName) << level << part << " " << i;
                EXPECT_STREQ(other.pMaterials[i].strFile, lo.pMaterials[i].strFile) << level << part << " " << i;
            }
            // Every object of a borrowing level finds its picture in the LO model.
            for (const t3DObject& o : other.pObject)
                EXPECT_NE(model(std::string("LO") + part).Texture[o.materialID], 0u) << level << part << " " << o.strName;
        }
    }
}

TEST_F(KartModelsFiles, KartPartsAreTexturedAndTheGhostIsNot) {
    // The kart is drawn in plain white or the kart's colour, so every part
    // needs a picture and coordinates for it.
    for (const char* level : modelgen::KART_LEVELS)
        for (const std::string& name : kartNames(level))
            for (const t3DObject& o : model(name).g_3DModel.pObject) {
                EXPECT_TRUE(o.bHasTexture) << name << " / " << o.strName;
                EXPECT_EQ(o.numTexVertex, o.numOfVerts) << name << " / " << o.strName;
            }
    // The paint is the one picture the kart's colour tints.
    for (const char* level : modelgen::KART_LEVELS) {
        const t3DModel& m = model(level + std::string("plastic")).g_3DModel;
        for (const t3DObject& o : m.pObject) EXPECT_STREQ(m.pMaterials[o.materialID].strFile, "Kartpaint.tga");
    }
    const t3DModel& ghost = model("SLOgokart").g_3DModel;
    for (const t3DObject& o : ghost.pObject) {
        EXPECT_FALSE(o.bHasTexture);
        EXPECT_EQ(o.pTexVerts, nullptr);
    }
}

TEST_F(KartModelsFiles, ThePicturesNamedAreOursAndSpelledExactly) {
    const std::set<std::string> known = {"Sky.tga",   "Kartpaint.tga", "Suit.tga",      "Helmet.tga", "Tyre.tga",
                                         "Wood.tga",  "Metal.tga",     "Stone.tga",     "Tribune.tga", "Barrel.tga",
                                         "Barrel2.tga", "Container.tga", "Signs.tga", "Finish.tga", "Nature1.tga"};
    for (const std::string& t : textureNames()) EXPECT_TRUE(known.count(t)) << t;
    // Case matters on the player's disk.
    for (const std::string& name : modelgen::modelNames()) {
        const t3DModel& m = model(name).g_3DModel;
        for (int i = 0; i < m.numOfMaterials; i++) {
            std::string f = m.pMaterials[i].strFile;
            if (!f.empty()) {
                EXPECT_TRUE(bvtest::fileExists("Data/Textures/" + f)) << name << " " << f;
            }
        }
    }
}

namespace {

void expectNear(float got, float want, const std::string& what, float tolerance = 0.002f) {
    EXPECT_NEAR(got, want, tolerance) << what;
}

}  // namespace

TEST_F(KartModelsFiles, KartPartsSitWhereTheDrawingPutsThem) {
    for (const char* level : modelgen::KART_LEVELS) {
        std::string L = level;
        // Wheels: radius 0.11 about the x axis, from the inner face at x = 0 outwards to -x.
        Box rear = bounds(model(L + "rearwheel")), front = bounds(model(L + "frontwheel"));
        expectNear(rear.hi.x, 0, L + " rear wheel inner face");
        expectNear(rear.lo.x, -0.19f, L + " rear tyre width");
        expectNear(front.hi.x, 0, L + " front wheel inner face");
        expectNear(front.lo.x, -0.11f, L + " front tyre width");
        for (const Box& w : {rear, front}) {
            expectNear(w.lo.y, -0.11f, L + " wheel radius", 0.004f);
            expectNear(w.hi.y, 0.11f, L + " wheel radius", 0.004f);
            expectNear(w.lo.z, -0.11f, L + " wheel radius", 0.004f);
            expectNear(w.hi.z, 0.11f, L + " wheel radius", 0.004f);
        }
        // Plastic: 1.24 wide, nose 1.364 ahead, tail 0.154 behind, clear of the ground.
        Box plastic = bounds(model(L + "plastic"));
        expectNear(plastic.lo.x, -0.62f, L + " plastic width");
        expectNear(plastic.hi.x, 0.62f, L + " plastic width");
        expectNear(plastic.lo.z, -1.364f, L + " nose");
        expectNear(plastic.hi.z, 0.154f, L + " tail");
        EXPECT_GT(plastic.lo.y, -0.11f) << L;
        // Chassis and body inside the kart's outline and above the ground.
        for (const char* part : {"chasis", "body"}) {
            Box b = bounds(model(L + part));
            EXPECT_GE(b.lo.x, -0.62f) << L << part;
            EXPECT_LE(b.hi.x, 0.62f) << L << part;
            EXPECT_GE(b.lo.z, -1.364f) << L << part;
            EXPECT_LE(b.hi.z, 0.154f) << L << part;
            EXPECT_GT(b.lo.y, -0.11f) << L << part;
        }
        // The body reaches the ankles and the neck.
        Box body = bounds(model(L + "body"));
        EXPECT_LT(body.lo.z, -1.1f) << L;
        EXPECT_GT(body.hi.y, 0.6f) << L;
        // The chassis carries the rear axle through both wheels' inner faces.
        Box chassis = bounds(model(L + "chasis"));
        EXPECT_LE(chassis.lo.x, -0.374f) << L;
        EXPECT_GE(chassis.hi.x, 0.374f) << L;
        // Arms along -z from their pivots: upper arm 0.3, forearm 0.33 with the hand.
        Box upper = bounds(model(L + "armu")), fore = bounds(model(L + "armd"));
        EXPECT_LT(upper.lo.z, -0.3f) << L;
        EXPECT_GT(upper.lo.z, -0.36f) << L;
        EXPECT_LT(fore.lo.z, -0.36f) << L;
        EXPECT_GT(fore.lo.z, -0.42f) << L;
        for (const Box& a : {upper, fore}) {
            EXPECT_LT(std::fabs(a.lo.x + a.hi.x), 0.002f) << L;
            EXPECT_LT(a.hi.z, 0.06f) << L;
        }
        // Steering wheel: in its own x-y plane, the rim through the grip points 0.148 out.
        Box wheel = bounds(model(L + "steeringwheel"));
        EXPECT_NEAR(wheel.hi.x, 0.148f + 0.016f, 0.003f) << L;
        EXPECT_NEAR(wheel.lo.x, -0.148f - 0.016f, 0.003f) << L;
        EXPECT_LT(wheel.hi.z - wheel.lo.z, 0.08f) << L;
        // Head: above its neck pivot, a helmet's size.
        Box head = bounds(model(L + "head"));
        EXPECT_NEAR(head.lo.y, 0, 0.01f) << L;
        EXPECT_NEAR(head.hi.y, 0.28f, 0.02f) << L;
        EXPECT_LT(head.hi.x - head.lo.x, 0.3f) << L;
        // Pedal and foot about their pivots.
        Box pedal = bounds(model(L + "pedal")), foot = bounds(model(L + "foot"));
        EXPECT_TRUE(pedal.contains({0, 0, 0}, 0.01f)) << L;
        EXPECT_GT(pedal.hi.y, 0.1f) << L;
        EXPECT_TRUE(foot.contains({0, 0, 0}, 0.01f)) << L;
        EXPECT_NEAR(foot.lo.z, -0.088f, 0.002f) << L << " sole";
    }
}

TEST_F(KartModelsFiles, TheSilhouetteHasTheKartsSize) {
    Box b = bounds(model("SLOgokart"));
    EXPECT_NEAR(b.lo.x, -0.62f, 0.002f);
    EXPECT_NEAR(b.hi.x, 0.62f, 0.002f);
    EXPECT_NEAR(b.lo.z, -1.364f, 0.002f);
    EXPECT_NEAR(b.hi.z, 0.154f, 0.002f);
    EXPECT_NEAR(b.lo.y, -0.11f, 0.002f);  // on its wheels
    Box hi = bounds(model("HIhead"));
    EXPECT_NEAR(b.hi.y, 0.55f + hi.hi.y, 0.02f);  // as tall as the driver's helmet
}
