// appstream_shots: the pictures of the game that software centres show,
// taken from the real game in the build tree: the race setup, the grid
// before the start, and the race under way. scripts/appstream-screenshots
// runs it on a private X screen and turns the pictures into PNGs.
//
//   appstream_shots OUTDIR      writes OUTDIR/menu.ppm, grid.ppm, race.ppm

#include <cstdio>
#include <string>

#include "e2e/e2e_fixtures.h"

using namespace e2e;

namespace {

int fail(const char* what, Game& game) {
    fprintf(stderr, "appstream_shots: %s\n%s", what, game.log().c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: appstream_shots OUTDIR\n");
        return 2;
    }
    const std::string out = argv[1];
    Options options;
    // A named player in orange against five opponents, on the riverside circuit.
    options.gencon = "Valentina\n3\n6\n1\n0\n10784\n";
    options.track = "riverside";
    Game game(options);
    if (!game.atMenu()) return fail("the menu never came", game);
    game.menuFrames(20);
    grab().save(out + "/menu.ppm");

    if (!game.startRace()) return fail("the race did not start", game);
    Picture grid;
    if (!game.onTheGrid(&grid)) return fail("the kart never stood on the grid", game);
    grid.save(out + "/grid.ppm");

    if (!game.countdownOver()) return fail("the countdown did not end", game);
    // Off the line behind the field, seen from above and behind.
    game.tap("4");
    game.keyDown("Up");
    rest(1.5);
    Picture race = game.screenshot();
    game.keyUp("Up");
    if (race.empty()) return fail("no screenshot of the race", game);
    race.save(out + "/race.ppm");

    game.escape();
    return game.close() == 0 ? 0 : fail("the game did not end cleanly", game);
}
