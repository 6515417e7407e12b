// The very first start of the game in a fresh directory, as a player sees
// and hears it: the splash picture with its loading bar, then the race-setup
// menu with the kart and the track turning in their previews, the start-up
// fanfare and, once it has played, the looping menu tune.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

TEST(E2eFirstStart, SplashLoadingBarMenuWithPreviewsThenFanfareThenMenuTune) {
    Options first;
    first.gencon = "";  // no race setup remembered yet
    Game game(first);
    ASSERT_TRUE(game.started()) << game.process().output();

    // The splash with its ten-segment bar, until the menu takes over.
    bool splash = false;
    Picture splashPicture;
    ASSERT_TRUE(waitFor(
        [&] {
            Picture p = grab();
            if (!splash && loadingSegments(p) >= 0) {
                splash = true;
                splashPicture = p;
            }
            return menu::shown(p);
        },
        240, 0.1))
        << "the menu never came";
    EXPECT_TRUE(splash) << "no splash screen with a loading bar";
    if (splash) {
        // The picture, not a black screen: the orange title across the top.
        EXPECT_GT(splashPicture.count({0, 180, 1024, 120},
                                      [](int r, int g, int b) { return r > 180 && g > 80 && g < 200 && b < 90; }),
                  5000);
    }
    ASSERT_TRUE(game.atMenu());

    // Both previews: the player's red kart on the left, the track on the
    // right, each turning from frame to frame.
    Picture a = grab();
    ASSERT_TRUE(game.menuFrames(5));
    Picture b = grab();
    EXPECT_GT(a.count(menu::kKartPreview, [](int r, int g, int bl) { return r > 90 && r > 2 * g && r > 2 * bl; }), 500)
        << "no red kart in the kart preview";
    EXPECT_GT(a.difference(b, menu::kKartPreview), 0.2) << "the kart does not turn";
    EXPECT_GT(a.difference(b, menu::kTrackPreview), 0.2) << "the track does not turn";
    Rgb kart = a.mean(menu::kKartPreview), circuit = a.mean(menu::kTrackPreview);
    EXPECT_GT(std::abs(kart.r - circuit.r) + std::abs(kart.g - circuit.g) + std::abs(kart.b - circuit.b), 10)
        << "the two previews show the same";

    // Listen on in the menu until the fanfare has had time to end and the
    // menu tune to play a few seconds.
    double onset = -1;
    ASSERT_TRUE(waitFor([&] { return (onset = game.sound().onset()) >= 0; }, 60, 1)) << "no sound at all";
    ASSERT_TRUE(waitFor([&] { return game.soundSeconds() > onset + 20; }, 120, 0.5));
    ASSERT_EQ(game.close(), 0);

    Sound heard = game.sound();
    Sound fanfare = readSound(game.path("Data/Sounds/iintro.mp3"));
    Sound tune = readSound(game.path("Data/Sounds/intro.mp3"));
    ASSERT_GT(fanfare.seconds(), 10);
    ASSERT_GT(tune.seconds(), 10);
    double fanfareAt = -1, tuneAt = -1;
    // The fanfare's second and third seconds, from the first sound on.
    double f = match(heard, onset, onset + 4, fanfare.part(1, 3), &fanfareAt);
    EXPECT_GT(f, 0.7) << "the start-up fanfare is not what plays first";
    // The menu tune's second and third seconds, once the fanfare is over.
    double t = match(heard, onset + fanfare.seconds() - 1, heard.seconds(), tune.part(1, 3), &tuneAt);
    EXPECT_GT(t, 0.7) << "the menu tune does not follow the fanfare";
    // And not the other way round: the fanfare's end is not heard again later.
    double again = match(heard, onset + fanfare.seconds() + 2, heard.seconds(), fanfare.part(1, 3));
    EXPECT_LT(again, f - 0.2) << "the fanfare plays on";
    printf("fanfare %.2f at %.1f s, menu tune %.2f at %.1f s (first sound at %.1f s)\n", f, fanfareAt, t, tuneAt,
           onset);

    std::vector<std::string> log = bvtest::lines(game.log());
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log[log.size() - 2], " everything went smooth! :)") << game.log();
}

}  // namespace
