// What the saved files look like after a save went wrong: a disk that fills
// up part-way through the write or fails to flush, and a process killed in
// the middle of saving. The saving is done by real processes (savechild),
// with the full disk preloaded into them (shim/failwrite.cpp).

#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <ostream>
#include <map>
#include <string>
#include <vector>

#include "frontend/highscore.h"
#include "kart/gokart.h"
#include "scene/ghost.h"
#include "shell/blackbox.h"
#include "shell/bvconfig.h"
#include "shell/performance.h"
#include "shell/safesave.h"
#include "support/bvtest_fixtures.h"
#include "track/track.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using bvtest::fileExists;
using bvtest::readFile;

struct Kind {
    const char* name;  // savechild's word for it
    const char* file;  // where it is saved, under the game directory
};
void PrintTo(const Kind& kind, std::ostream* os) {
    *os << kind.name;
}
const Kind kKinds[] = {
    {"records", "Data/Highscore/oval.txt"},
    {"ghost", "Data/Ghosts/oval.txt"},
    {"setup", "Data/gencon.bvd"},
};

void makeGameDir(const std::string& dir) {
    fs::create_directories(dir + "/Data/Highscore");
    fs::create_directories(dir + "/Data/Ghosts");
}

// With `out`, the child's standard output comes back through a pipe.
pid_t spawn(const std::vector<std::string>& args, const std::vector<std::string>& env, int* out = nullptr) {
    std::vector<std::string> all;
    for (char** e = environ; *e; e++) all.push_back(*e);
    all.insert(all.end(), env.begin(), env.end());
    std::vector<char*> argv, envp;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    for (const std::string& e : all) envp.push_back(const_cast<char*>(e.c_str()));
    envp.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    int fds[2] = {-1, -1};
    if (out) {
        if (pipe(fds) != 0) return -1;
        posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
    }
    pid_t pid = -1;
    int r = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (out) {
        close(fds[1]);
        *out = fds[0];
    }
    return r == 0 ? pid : -1;
}

// Saves version `version` of `kind` in `dir` once; returns the exit status.
int saveOnce(const std::string& dir, const Kind& kind, int version, const std::vector<std::string>& env = {}) {
    pid_t pid = spawn({BV_SAVECHILD, dir, kind.name, std::to_string(version)}, env);
    if (pid < 0) return -1;
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// The bytes savechild writes for each version, made once in a directory of their own.
std::string contents(const Kind& kind, int version) {
    std::string dir = fs::absolute("versions-" + std::to_string(version)).string();
    makeGameDir(dir);
    EXPECT_EQ(saveOnce(dir, kind, version), 0);
    return readFile(dir + "/" + kind.file);
}

// A disk that fills up: the shim takes the first `after` bytes of the file.
std::vector<std::string> fullDisk(const Kind& kind, long after) {
    std::string stem = fs::path(kind.file).filename().string();
    // The ASan runtime wants to be the first library; the shim is tiny and
    // harmless ahead of it.
    return {std::string("LD_PRELOAD=") + BV_FAILWRITE, "BVFAIL_PATH=" + stem, "BVFAIL_AFTER=" + std::to_string(after),
            "ASAN_OPTIONS=verify_asan_link_order=0"};
}

class SaveFaults : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        game = fs::absolute("game").string();
        makeGameDir(game);
        path = game + "/" + GetParam().file;
        oldText = contents(GetParam(), 1);
        newText = contents(GetParam(), 2);
        ASSERT_FALSE(oldText.empty());
        ASSERT_NE(oldText, newText);
        ASSERT_EQ(saveOnce(game, GetParam(), 1), 0);
        ASSERT_EQ(readFile(path), oldText);
    }
    std::string log() const { return readFile(game + "/Data/blackbox.bvd"); }
    std::string failedLine() const { return std::string("Saving ") + GetParam().file + " [  ]"; }

    bvtest::ScratchDir dir;
    std::string game, path, oldText, newText;
};

// The shim is honest: with room for the whole file the save goes through, so
// the failures below are the disk's and not the shim's.
TEST_P(SaveFaults, WithRoomForTheWholeFileTheNewOneIsSaved) {
    EXPECT_EQ(saveOnce(game, GetParam(), 2, fullDisk(GetParam(), (long)newText.size())), 0);
    EXPECT_EQ(readFile(path), newText);
    EXPECT_EQ(log().find("[  ]"), std::string::npos) << log();
}

TEST_P(SaveFaults, ADiskFullPartWayKeepsTheOldFileByteForByteAndSaysWhich) {
    long size = (long)newText.size();
    for (long after : {0L, 1L, size / 3, size / 2, size - 1}) {
        SCOPED_TRACE("disk full after " + std::to_string(after) + " of " + std::to_string(size) + " bytes");
        EXPECT_EQ(saveOnce(game, GetParam(), 2, fullDisk(GetParam(), after)), 1);
        EXPECT_EQ(readFile(path), oldText);
        EXPECT_FALSE(fileExists(path + ".tmp"));
        EXPECT_NE(log().find(failedLine()), std::string::npos) << log();
    }
}

TEST_P(SaveFaults, AFailedFlushToDiskKeepsTheOldFileAndSaysWhich) {
    std::vector<std::string> env = fullDisk(GetParam(), 1 << 30);
    env.push_back("BVFAIL_FSYNC=1");
    EXPECT_EQ(saveOnce(game, GetParam(), 2, env), 1);
    EXPECT_EQ(readFile(path), oldText);
    EXPECT_FALSE(fileExists(path + ".tmp"));
    EXPECT_NE(log().find(failedLine()), std::string::npos) << log();
}

// Killed at random moments while saving two versions in turn over the first:
// every time, the file is one of the three whole, never a mix, never empty.
TEST_P(SaveFaults, KilledWhileSavingTheFileIsAlwaysOneWholeVersion) {
    std::string third = contents(GetParam(), 3);
    ASSERT_NE(third, newText);
    std::mt19937 random(20261122);
    std::uniform_int_distribution<long> pause(0, 20000);  // microseconds
    std::map<int, int> seen;
    int midsave = 0;
    const int kills = 120;
    for (int i = 0; i < kills; i++) {
        int out = -1;
        pid_t pid = spawn({BV_SAVECHILD, game, GetParam().name, "2", "3", "loop"}, {}, &out);
        ASSERT_GT(pid, 0);
        // Starting the program takes longer than a save: wait until it is
        // about to begin saving, then give it a moment of random length.
        char ready = 0;
        ASSERT_EQ(read(out, &ready, 1), 1);
        close(out);
        struct timespec t = {0, pause(random) * 1000};
        nanosleep(&t, nullptr);
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "the saver ended on its own";
        std::string text = readFile(path);
        int version = text == oldText ? 1 : text == newText ? 2 : text == third ? 3 : 0;
        ASSERT_NE(version, 0) << "after kill " << i << " the file is no whole version (" << text.size()
                              << " bytes)";
        seen[version]++;
        // The temporary file left behind: this kill came in the middle of a save.
        if (fileExists(path + ".tmp")) midsave++;
    }
    printf("kills: %d in the middle of a save; file afterwards: old %d, second %d, third %d\n", midsave, seen[1],
           seen[2], seen[3]);
    // Kills landed in the middle of saves, and between whole ones; otherwise
    // this proved nothing.
    EXPECT_GT(midsave, 0);
    EXPECT_GE(seen.size(), 2u);
    // A kill between writing and renaming leaves the temporary file; the next
    // save writes over it and renames it away.
    ASSERT_EQ(saveOnce(game, GetParam(), 1), 0);
    EXPECT_EQ(readFile(path), oldText);
    EXPECT_FALSE(fileExists(path + ".tmp"));
}

INSTANTIATE_TEST_SUITE_P(Files, SaveFaults, ::testing::ValuesIn(kKinds),
                         [](const ::testing::TestParamInfo<Kind>& info) { return std::string(info.param.name); });

// When are the records and the ghost written? The moment a lap enters the
// table (and, for a new best lap, becomes the ghost), and again when the track
// is released: a game killed with -9 right after a new record keeps it.
class RecordKill : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories("Data/Highscore");
        fs::create_directories("Data/Ghosts");
        bvtest::writeFile("Data/Highscore/oval.txt", oldRecords);
        bvtest::writeFile("Data/Ghosts/oval.txt", "45.000000\n1.000000\n2.000000\n3.000000\n");
    }
    // In a child: load the track's tables as the track loader does, drive a
    // lap of 30 s that beats them all, do `after`, then die by SIGKILL.
    void recordThenKill(void (*after)()) {
        fflush(nullptr);
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            blackbox.init("Data/blackbox.bvd", false);
            config.PATH[0] = 0;
            strcpy(track.trackname[0], "oval");
            track.ntracks = 1;
            config.track = 0;
            strcpy(config.player1name, "ANNA");
            performance.fps = 30;
            highscore.init();
            ghost.init();
            ghost.badone();
            for (int i = 0; i < 60; i++) {
                gokart[0].px = (float)i;
                gokart[0].pz = (float)-i;
                gokart[0].ay = 0;
                ghost.record();
            }
            gokart[0].currentlaptime = 30.0f;
            highscore.checkfornewrecord(0);
            if (strcmp(highscore.laprecord_name[0], "ANNA") != 0 || ghost.nRecs[1] != 30) _exit(3);
            // The writer thread flushes them to disk within milliseconds.
            finishsaves();
            after();
            kill(getpid(), SIGKILL);
            _exit(4);
        }
        int status = 0;
        waitpid(pid, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL)
            << "child ended with " << (WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    }
    bvtest::ScratchDir dir;
    const std::string oldRecords = "BEN 40.000000\nCPU 41.000000\n";
};

TEST_F(RecordKill, KilledRightAfterANewRecordTheDiskHoldsTheNewTableAndGhost) {
    recordThenKill([] {});
    std::vector<std::string> l = bvtest::lines(readFile("Data/Highscore/oval.txt"));
    ASSERT_EQ(l.size(), 10u);
    EXPECT_EQ(l[0], "ANNA 30.000000");
    EXPECT_EQ(l[1], "BEN 40.000000");
    EXPECT_EQ(l[2], "CPU 41.000000");
    std::vector<std::string> g = bvtest::lines(readFile("Data/Ghosts/oval.txt"));
    ASSERT_EQ(g.size(), 1u + 3 * 30);
    EXPECT_EQ(g[0], "30.000000");
    EXPECT_EQ(g[1], "0.000000");
    EXPECT_FALSE(fileExists("Data/Highscore/oval.txt.tmp"));
    EXPECT_FALSE(fileExists("Data/Ghosts/oval.txt.tmp"));
}

TEST_F(RecordKill, ALapThatOnlyEntersTheTableIsKeptButTheGhostStays) {
    // 40.5 s: second place, so the table changes and the ghost does not.
    fflush(nullptr);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        blackbox.init("Data/blackbox.bvd", false);
        config.PATH[0] = 0;
        strcpy(track.trackname[0], "oval");
        track.ntracks = 1;
        config.track = 0;
        strcpy(config.player1name, "ANNA");
        highscore.init();
        ghost.init();
        gokart[0].currentlaptime = 40.5f;
        highscore.checkfornewrecord(0);
        finishsaves();
        kill(getpid(), SIGKILL);
        _exit(4);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    std::vector<std::string> l = bvtest::lines(readFile("Data/Highscore/oval.txt"));
    ASSERT_EQ(l.size(), 10u);
    EXPECT_EQ(l[0], "BEN 40.000000");
    EXPECT_EQ(l[1], "ANNA 40.500000");
    EXPECT_EQ(readFile("Data/Ghosts/oval.txt"), "45.000000\n1.000000\n2.000000\n3.000000\n");
}

TEST_F(RecordKill, ARecordIsKeptOnceTheTrackIsReleased) {
    // What leaving the game (and, before the next track loads, the menu's
    // track arrows) does first.
    recordThenKill([] { track.free(); });
    std::vector<std::string> l = bvtest::lines(readFile("Data/Highscore/oval.txt"));
    ASSERT_EQ(l.size(), 10u);
    EXPECT_EQ(l[0], "ANNA 30.000000");
    EXPECT_EQ(l[1], "BEN 40.000000");
    std::vector<std::string> g = bvtest::lines(readFile("Data/Ghosts/oval.txt"));
    ASSERT_EQ(g.size(), 1u + 3 * 30);
    EXPECT_EQ(g[0], "30.000000");
}

}  // namespace
