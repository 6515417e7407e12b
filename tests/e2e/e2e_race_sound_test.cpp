// Six karts off the grid at once, heard as a player's sound server gets the
// mix: the player and five opponents rev up together and the player drives
// off, and no sample of either side comes to full scale, while the race is
// still plainly loud.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

// What the largest 16-bit sample stands for; a float sample at or past it is
// clipped on its way to the speakers.
const double kFullScale = 32767.0 / 32768.0;

TEST(E2eRaceSound, SixKartsRevvingOffTheGridNeverReachFullScale) {
    Options options;
    options.gencon = "unnamed\n0\n6\n0\n0\n10784\n";  // the player and five opponents
    Game game(options);
    ASSERT_TRUE(game.atMenu()) << game.process().output();

    ASSERT_TRUE(game.startRace());
    double start = game.soundSeconds();
    ASSERT_TRUE(game.countdownOver());
    // Off the grid, and five seconds of the race heard past the countdown:
    // counted in the mixer's own time, which a slow machine does not stretch.
    double go = game.soundSeconds();
    game.keyDown("Up");
    EXPECT_TRUE(waitFor([] { return race::gantry(grab()) < 300; }, 120, 0.1)) << "the player did not leave the grid";
    EXPECT_TRUE(waitFor([&] { return game.soundSeconds() > go + 5; }, 120, 0.1)) << "the mixer stopped";
    game.keyUp("Up");
    double end = game.soundSeconds();
    ASSERT_TRUE(game.escape());
    ASSERT_TRUE(game.press(menu::kQuitX, menu::kQuitY));
    ASSERT_EQ(game.process().wait(60), 0) << game.process().output();

    int channels = 0, rate = 0;
    std::vector<float> samples = readWavSamples(game.path("capture.wav"), &channels, &rate);
    ASSERT_EQ(channels, 2);
    size_t from = (size_t)(start * rate) * 2, to = (size_t)(end * rate) * 2;
    ASSERT_LE(to, samples.size());
    ASSERT_GT(end - start, 5) << "the race was not heard";
    int atFullScale = 0;
    double peak = 0, power = 0;
    for (size_t i = from; i < to; i++) {
        double v = std::fabs(samples[i]);
        if (v >= kFullScale) atFullScale++;
        peak = std::max(peak, v);
        power += v * v;
    }
    double rms = std::sqrt(power / (double)(to - from));
    printf("%.1f s of the race: %d samples at full scale, peak %.4f (%.2f dBFS), rms %.4f (%.2f dBFS)\n",
           end - start, atFullScale, peak, 20 * std::log10(peak), rms, 20 * std::log10(rms));
    EXPECT_EQ(atFullScale, 0);
    EXPECT_LT(peak, kFullScale);
    // Six engines and the tyres at full throttle: not to be kept quiet by
    // turning everything down.
    EXPECT_GT(rms, 0.08);
}

}  // namespace
