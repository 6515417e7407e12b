// A kart wedged nose-first in the tyres, on each shipped circuit and against
// each of its barriers, put back on the road: where it stands afterwards,
// that it has gained nothing, and that the lap still counts when it drives on.

#include "kart_fixtures.h"

#include <filesystem>
#include <vector>

#include "shell/angles.h"

using namespace kartfix;
namespace fs = std::filesystem;

namespace {

const std::vector<std::string> SHIPPED = {"Harbour", "Millbrook", "Pinewood", "Quarry", "Riverside"};

struct Vec {
    double x, z;
};

Vec middle(unsigned int i) {
    return {(track.Lpoint[i].x + track.Rpoint[i].x) / 2.0, (track.Lpoint[i].z + track.Rpoint[i].z) / 2.0};
}

// Square to the line across the road at pair i, the way the next pair lies.
Vec along(unsigned int i) {
    const unsigned int n = track.pairs();
    Vec d = {track.Rpoint[i].z - track.Lpoint[i].z, -(track.Rpoint[i].x - track.Lpoint[i].x)};
    const Vec a = middle(i), b = middle((i + 1) % n);
    if (d.x * (b.x - a.x) + d.z * (b.z - a.z) < 0) d = {-d.x, -d.z};
    const double l = std::hypot(d.x, d.z);
    return {d.x / l, d.z / l};
}

double headingOf(Vec d) {
    return DEG_PER_RAD * std::atan2(-d.x, -d.z);
}

double wrap(double a) {
    while (a >= 180) a -= 360;
    while (a < -180) a += 360;
    return a;
}

// What a race has counted for a kart, which a rescue must leave alone.
struct Counted {
    unsigned char lap, checkpoint;
    bool thislapcounted;
    time_t lapstart;
    std::vector<float> laptimes;

    explicit Counted(const sGokart& k)
        : lap(k.lap),
          checkpoint(k.checkpoint),
          thislapcounted(k.thislapcounted),
          lapstart(k.lapstart),
          laptimes(k.laptime, k.laptime + GOKART_NLAPTIMES) {}
    bool operator==(const Counted& o) const {
        return lap == o.lap && checkpoint == o.checkpoint && thislapcounted == o.thislapcounted &&
               lapstart == o.lapstart && laptimes == o.laptimes;
    }
};

class KartRescue : public KartTest {
protected:
    void SetUp() override {
        KartTest::SetUp();
        std::string built = std::string(BV_GAME_DIR) + "/Data/Tracks";
        ASSERT_TRUE(fs::exists(built)) << "no generated content in " << built;
        for (const auto& f : fs::directory_iterator(built))
            fs::copy_file(f.path(), "Data/Tracks/" + f.path().filename().string(),
                          fs::copy_options::overwrite_existing);
    }

    // Kart k in the middle of a lap, standing on the road with its nose a
    // metre short of barrier point i (left or right) and pointing square
    // into it, having last reached the pair before.
    void facingTheWall(sGokart& k, unsigned int i, bool left) {
        k.init(k.ID);
        const unsigned int n = track.pairs();
        const sTrackPoint &wall = left ? track.Lpoint[i] : track.Rpoint[i],
                          &other = left ? track.Rpoint[i] : track.Lpoint[i];
        Vec d = {(double)wall.x - other.x, (double)wall.z - other.z};
        const double l = std::hypot(d.x, d.z);
        d = {d.x / l, d.z / l};
        const double back = gokartstaticdata.chasisfront + 1.0;
        k.px = (float)(wall.x - d.x * back);
        k.pz = (float)(wall.z - d.z * back);
        k.ay = k.may = (float)headingOf(d);
        k.ups = 0;
        k.lap = 1;
        k.checkpoint = (unsigned char)((i + n - 1) % n);
        k.thislapcounted = false;
        k.lapstart = bvclock();
    }

    // Throttle held for `seconds`: the furthest the kart got from `wall`.
    double throttle(sGokart& k, double seconds, const sTrackPoint& wall) {
        double furthest = 0;
        for (int f = 0; f < (int)(seconds * fps()); f++) {
            k.kUP = true;
            k.kLEFT = k.kRIGHT = k.kDOWN = false;
            drive(k);
            furthest = std::max(furthest, std::hypot((double)k.px - wall.x, (double)k.pz - wall.z));
        }
        return furthest;
    }

    // Round the circuit from where the kart is, the computer driving it,
    // until its lap counter moves on. The checkpoints reached on the way,
    // in order.
    std::vector<unsigned int> driveOnUntilTheLapCounts(sGokart& k, double limit) {
        const unsigned char lap = k.lap;
        std::vector<unsigned int> seen = {k.checkpoint};
        const unsigned int humans = config.nhumanplayers;
        config.nhumanplayers = 0;
        for (int f = 0; f < (int)(limit * fps()) && k.lap == lap; f++) {
            k.think();
            drive(k);
            if (k.checkpoint != seen.back()) seen.push_back(k.checkpoint);
        }
        config.nhumanplayers = humans;
        k.aidriver = false;
        return seen;
    }
};

class KartRescueWalls : public KartRescue, public ::testing::WithParamInterface<std::tuple<std::string, bool>> {};

// Kart k stands where it was put, in the middle of pair c or set back along
// the road from there by the least that keeps its nose short of the next
// pair; facing on round, at rest. The set-back, in metres.
double putDownAt(const sGokart& k, unsigned int c) {
    const Vec m = middle(c), d = along(c);
    const double back = -((k.px - m.x) * d.x + (k.pz - m.z) * d.z);
    EXPECT_NEAR((k.px - m.x) * d.z - (k.pz - m.z) * d.x, 0, 1e-3) << "off the line along the road";
    EXPECT_GE(back, -1e-3);
    EXPECT_LE(back, 2.0);
    EXPECT_NEAR(wrap(k.ay - headingOf(d)), 0, 0.01);
    EXPECT_FLOAT_EQ(k.may, k.ay);
    EXPECT_EQ(k.ups, 0);
    EXPECT_EQ(k.sw_ay, 0);
    EXPECT_EQ(k.pedal_up, 0);
    EXPECT_EQ(k.pedal_down, 0);
    EXPECT_EQ(k.lfw_ay, 0);
    EXPECT_EQ(k.rfw_ay, 0);
    if (back > 0.05) {
        // A step nearer the middle would have reached the next pair.
        sGokart probe = k;
        probe.px = (float)(k.px + d.x * 0.1);
        probe.pz = (float)(k.pz + d.z * 0.1);
        EXPECT_EQ(probe.getcheckpoint(), c + 1) << "set back " << back << " m for nothing";
    }
    return back;
}

// The kart is driven square at each barrier point of one side of the
// circuit in turn. Where the throttle then holds it in the tyres (as on
// the outside of most bends), it is rescued: it stands clear of both
// barriers in the middle of the pair last reached, gains nothing by
// standing there, and counts the lap when it drives on round.
TEST_P(KartRescueWalls, AWedgedKartIsPutBackOnTheRoadAndTheLapStillCounts) {
    auto [name, left] = GetParam();
    selectTrack(name);
    startRace();
    sGokart& k = gokart[0];
    const unsigned int n = track.pairs();
    ASSERT_GE(n, 20u);
    unsigned int wedged = 0, laps = 0;
    double furthestBack = 0;
    for (unsigned int i = 2; i + 2 < n; i++) {
        SCOPED_TRACE(name + (left ? " left" : " right") + " barrier at pair " + std::to_string(i));
        const sTrackPoint wall = left ? track.Lpoint[i] : track.Rpoint[i];
        facingTheWall(k, i, left);
        // Into the tyres; then, if it is held there, the throttle never
        // gets it more than a kart's length away.
        throttle(k, 1, wall);
        const float wx = k.px, wz = k.pz;
        const unsigned char reached = k.checkpoint;
        double moved = 0;
        for (int f = 0; f < 5 * fps() && moved < 1; f++) {
            k.kUP = true;
            drive(k);
            moved = std::max(moved, (double)std::hypot(k.px - wx, k.pz - wz));
        }
        if (moved >= 1 || k.checkpoint != reached) continue;
        wedged++;

        const Counted before(k);
        const unsigned int c = k.checkpoint;
        k.rescue();
        EXPECT_TRUE(Counted(k) == before) << "the rescue changed what the race counted";
        furthestBack = std::max(furthestBack, putDownAt(k, c));
        k.colide();
        bool hit[8];
        EXPECT_FALSE(track.checkOutline(k.colx, k.colz, 8, hit)) << "put down touching a barrier";
        EXPECT_TRUE(track.ontrack(k.px, k.pz));

        // Standing there gains nothing either.
        const float rx = k.px, rz = k.pz;
        k.kUP = k.kDOWN = k.kLEFT = k.kRIGHT = false;
        for (int f = 0; f < 2 * fps(); f++) drive(k);
        EXPECT_EQ(k.checkpoint, c);
        EXPECT_EQ(k.lap, 1);
        EXPECT_FLOAT_EQ(k.px, rx);
        EXPECT_FLOAT_EQ(k.pz, rz);

        // Driving on, every pair is reached in turn and the lap counts.
        std::vector<unsigned int> seen = driveOnUntilTheLapCounts(k, 180);
        ASSERT_EQ(k.lap, 2) << "the lap never counted; last checkpoint " << (int)k.checkpoint;
        ASSERT_EQ(seen.size(), n - c + 1);
        for (unsigned int s = 0; s + 1 < seen.size(); s++) EXPECT_EQ(seen[s], c + s);
        EXPECT_EQ(seen.back(), 0u);
        laps++;
    }
    std::printf("%s, %s barrier: wedged at %u of %u points, %u laps driven on, set back %.2f m at most\n",
                name.c_str(), left ? "left" : "right", wedged, n - 4, laps, furthestBack);
    EXPECT_GE(wedged, 1u) << "nowhere to wedge a kart: the test has nothing to rescue";
}

INSTANTIATE_TEST_SUITE_P(Shipped, KartRescueWalls,
                         ::testing::Combine(::testing::ValuesIn(SHIPPED), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<std::string, bool>>& info) {
                             return std::get<0>(info.param) + (std::get<1>(info.param) ? "Left" : "Right");
                         });

class KartRescuePairs : public KartRescue, public ::testing::WithParamInterface<std::string> {};

// From wherever the kart is, for every pair it may last have reached: the
// rescue and two seconds standing after it leave the checkpoint and lap as
// they were. Pair n - 1 is the line: the lap it has earned counts on the
// next frame, as it would have without the rescue, and no more.
TEST_P(KartRescuePairs, ARescueNeverReachesAPairNotYetReached) {
    selectTrack(GetParam());
    startRace();
    sGokart& k = gokart[0];
    const unsigned int n = track.pairs();
    unsigned int setback = 0;
    double furthest = 0;
    for (unsigned int c = 0; c < n; c++) {
        for (bool counted : {false, true}) {
            if (counted && c != 0) continue;  // just over the line
            SCOPED_TRACE("checkpoint " + std::to_string(c) + (counted ? ", lap just counted" : ""));
            // Somewhere else on the circuit, going flat out.
            const Vec far = middle((c + n / 2) % n);
            k.px = (float)far.x;
            k.pz = (float)far.z;
            k.ups = 20;
            k.lap = 3;
            k.checkpoint = (unsigned char)c;
            k.thislapcounted = counted;
            k.rescue();
            EXPECT_EQ(k.checkpoint, c);
            EXPECT_EQ(k.lap, 3);
            const double back = putDownAt(k, c);
            if (back > 1e-3) setback++;
            furthest = std::max(furthest, back);
            k.kUP = k.kDOWN = k.kLEFT = k.kRIGHT = false;
            for (int f = 0; f < 2 * fps(); f++) {
                drive(k);
                if (c == n - 1) {
                    EXPECT_EQ(k.lap, 4);
                    EXPECT_EQ(k.checkpoint, 0);
                } else {
                    EXPECT_EQ(k.lap, 3);
                    EXPECT_EQ(k.checkpoint, c);
                }
            }
        }
    }
    std::printf("%s: %u pairs, %u with the kart set back, %.2f m at most\n", GetParam().c_str(), n, setback, furthest);
}

INSTANTIATE_TEST_SUITE_P(Shipped, KartRescuePairs, ::testing::ValuesIn(SHIPPED));

// Before the line is first crossed no pair has been passed that counts: the
// kart goes back to its own place on the grid, and the lap it then drives
// counts from the line as any other.
TEST_F(KartRescue, BeforeTheLineTheKartGoesBackToItsGridPlace) {
    selectTrack("Harbour");
    config.nhumanplayers = 2;
    startRace();
    const unsigned int n = track.pairs();
    for (unsigned char id : {0, 1}) {
        SCOPED_TRACE("kart " + std::to_string(id));
        sGokart& k = gokart[id];
        const float gx = k.px, gz = k.pz;
        // Off the grid and into the left tyres of the start straight.
        k.kUP = k.kLEFT = true;
        for (int f = 0; f < 3 * fps() && k.ups < 100; f++) drive(k);
        k.kLEFT = false;
        for (int f = 0; f < 2 * fps(); f++) drive(k);
        ASSERT_GT(std::hypot(k.px - gx, k.pz - gz), 3.0);
        ASSERT_EQ(k.lap, 0);
        const Counted before(k);
        k.rescue();
        EXPECT_TRUE(Counted(k) == before);
        EXPECT_EQ(k.checkpoint, n - 2);
        EXPECT_EQ(k.px, gx);
        EXPECT_EQ(k.pz, gz);
        EXPECT_EQ(k.ay, 0);
        EXPECT_EQ(k.may, 0);
        EXPECT_EQ(k.ups, 0);
        EXPECT_EQ(k.sw_ay, 0);
        k.kUP = k.kLEFT = false;
        for (int f = 0; f < 2 * fps(); f++) drive(k);
        EXPECT_EQ(k.lap, 0);
        EXPECT_EQ(k.px, gx);
        EXPECT_EQ(k.pz, gz);
        // Over the line, and on round until the next lap counts.
        driveOnUntilTheLapCounts(k, 30);
        ASSERT_EQ(k.lap, 1);
        std::vector<unsigned int> seen = driveOnUntilTheLapCounts(k, 180);
        EXPECT_EQ(k.lap, 2);
        EXPECT_EQ(seen.size(), n + 1);
    }
}

}  // namespace
