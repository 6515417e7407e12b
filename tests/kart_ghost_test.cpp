// The ghost end to end: kart 0 drives two timed laps alone on our test
// circuit; its best lap becomes the track's ghost file when the track is
// released, and the next load of the track plays that lap back.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "frontend/highscore.h"
#include "kart_fixtures.h"
#include "scene/ghost.h"

using namespace kartfix;

namespace {

class KartGhost : public KartTest {};

TEST_F(KartGhost, TheBestLapBecomesTheGhostAndIsPlayedBack) {
    std::filesystem::create_directories("Data/Highscore");
    std::filesystem::create_directories("Data/Ghosts");
    config.nhumanplayers = 0;  // the computer driver takes kart 0 round
    config.ngokarts = 1;
    config.aiskill = 2;
    strcpy(config.player1name, "GHOSTY");
    loadTrack("ghostring", Circuit().file(100));
    startRace();
    ghost.badone();  // as the race's reset does

    // Every place kart 0 has been, to find the ghost's samples among them.
    std::vector<std::pair<float, float>> path;
    while (gokart[0].lap < 3 && frames < 60L * 200) {
        frame();
        ghost.record();
        path.push_back({gokart[0].px, gokart[0].pz});
    }
    // The frame after the count closes the lap just finished.
    frame();
    ASSERT_EQ(gokart[0].lap, 3);
    float lap1 = gokart[0].laptime[1], lap2 = gokart[0].laptime[2];
    ASSERT_GT(lap1, 5.0f);
    ASSERT_GT(lap2, 5.0f);
    float best = std::min(lap1, lap2);
    EXPECT_FLOAT_EQ(highscore.laprecord_time[0], best);
    EXPECT_STREQ(highscore.laprecord_name[0], "GHOSTY");
    EXPECT_FLOAT_EQ(ghost.bestTime, best);
    int samples = ghost.nRecs[1];
    // About 20 samples a second at 60 frames a second.
    EXPECT_NEAR(samples, best * 20, 2);

    track.free();
    std::vector<std::string> l = bvtest::lines(bvtest::readFile("Data/Ghosts/ghostring.txt"));
    ASSERT_EQ(l.size(), 1u + 3 * samples);
    EXPECT_NEAR(std::stof(l[0]), best, 1e-5);
    EXPECT_NE(bvtest::readFile("Data/Highscore/ghostring.txt").find("GHOSTY"), std::string::npos);

    // A new race on the same track.
    ghost = sGhost();
    selectTrack("ghostring");
    ASSERT_EQ(ghost.nRecs[1], samples);
    EXPECT_NEAR(ghost.bestTime, best, 1e-5);
    EXPECT_FLOAT_EQ(highscore.laprecord_time[0], std::stof(bvtest::lines(
        bvtest::readFile("Data/Highscore/ghostring.txt"))[0].substr(7)));

    // Every sample is a place the kart really was, within the file's six decimals.
    for (int i = 0; i < samples; i++) {
        bool found = false;
        for (const auto& p : path)
            if (std::fabs(p.first - ghost.px[1][i]) < 1e-4 && std::fabs(p.second - ghost.pz[1][i]) < 1e-4) found = true;
        ASSERT_TRUE(found) << "sample " << i;
    }
    // Played back, the ghost travels the whole lap sample by sample, never
    // jumping further than a kart goes in a few frames.
    float x0, z0, a0;
    ghost.pose(&x0, &z0, &a0);
    EXPECT_FLOAT_EQ(x0, ghost.px[1][0]);
    double travelled = 0;
    float lx = x0, lz = z0;
    for (int f = 0; f < 3 * samples + 10; f++) {
        ghost.draw();
        float x, z, a;
        ghost.pose(&x, &z, &a);
        double step = std::hypot(x - lx, z - lz);
        EXPECT_LT(step, 1.0) << "frame " << f;
        travelled += step;
        lx = x;
        lz = z;
    }
    EXPECT_EQ(ghost.mRec, samples - 1);
    EXPECT_GT(travelled, 0.8 * Circuit().length());
}

}  // namespace
