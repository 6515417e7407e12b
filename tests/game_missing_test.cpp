// The real game binary started with parts of its Data/ tree missing, and its
// window squeezed to a single pixel: it must start, say in its log what it
// could not load, and close as cleanly as ever.

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "support/bvtest_fixtures.h"

using namespace bvtest;
namespace fs = std::filesystem;

namespace {

// A scratch copy of the game directory's Data/ with the shipped settings,
// sound on and captured into a file, so that a healthy start logs no failure.
class GameMissing : public ::testing::Test {
protected:
    void SetUp() override {
        fs::remove_all(dir.path() + "/Data");
        fs::copy(std::string(BV_GAME_DIR) + "/Data", dir.path() + "/Data", fs::copy_options::recursive);
        fs::remove(dir.path() + "/Data/blackbox.bvd");
        fs::remove(dir.path() + "/Data/gencon.bvd");
        writeFile("Data/config.bvd", readFile(std::string(BV_SOURCE_DIR) + "/data/config.bvd"));
    }

    // Starts the game, waits for its window, closes it and returns the log.
    std::string startAndClose() {
        GameProcess game(dir.path(), {"ALSOFT_CONF=" + waveConf(dir.path())});
        EXPECT_NE(game.window(), 0ul) << game.output();
        game.closeWindow();
        EXPECT_EQ(game.wait(), 0) << game.output();
        output = game.output();
        return readFile("Data/blackbox.bvd");
    }

    static std::string verdict(const std::string& log) {
        std::vector<std::string> l = lines(log);
        return l.size() >= 2 ? l[l.size() - 2] : "";
    }

    ScratchDir dir;
    std::string output;
};

TEST_F(GameMissing, WithEverythingInPlaceNothingFails) {
    std::string log = startAndClose();
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
    EXPECT_EQ(verdict(log), " everything went smooth! :)");
}

TEST_F(GameMissing, WithoutModelsEveryRoadsideModelIsReportedAndTheGameCloses) {
    fs::remove_all("Data/Models");
    std::string log = startAndClose();
    for (const char* model : {"tfinish", "camera", "camerastand", "adboard", "barrel", "barrelt", "container",
                              "barrel2", "barrel2t", "nature", "container2", "ad", "sign1", "sign2", "sign3",
                              "sign4"}) {
        std::string name = std::string("Data/Models/") + model + ".3DS";
        EXPECT_NE(log.find("Loading model f : " + name + " [  ]\n"), std::string::npos) << name << "\n" << log;
        EXPECT_NE(output.find("NOT FOUND: " + name + "\n"), std::string::npos) << name;
    }
    EXPECT_EQ(verdict(log), " something went wrong! :(");
    EXPECT_EQ(lines(readFile("Data/gencon.bvd")).size(), 6u);
}

TEST_F(GameMissing, WithoutTracksTheEmptyListIsReportedAndTheGameCloses) {
    fs::remove_all("Data/Tracks");
    std::string log = startAndClose();
    EXPECT_NE(log.find("Listing tracks : no tracks in Data/Tracks [  ]\n"), std::string::npos) << log;
    EXPECT_EQ(verdict(log), " something went wrong! :(");
    // The remembered track is brought back to the first entry of the empty list.
    std::vector<std::string> setup = lines(readFile("Data/gencon.bvd"));
    ASSERT_EQ(setup.size(), 6u);
    EXPECT_EQ(setup[4], "0");
}

TEST_F(GameMissing, WithAnEmptyTracksFolderTheSameIsReported) {
    fs::remove_all("Data/Tracks");
    fs::create_directory("Data/Tracks");
    std::string log = startAndClose();
    EXPECT_NE(log.find("Listing tracks : no tracks in Data/Tracks [  ]\n"), std::string::npos) << log;
}

// Without its sounds the game starts silent: each missing sound is reported and the game closes.
TEST_F(GameMissing, WithoutSoundsEveryMissingSoundIsReportedAndTheGameCloses) {
    fs::remove_all("Data/Sounds");
    std::string log = startAndClose();
    EXPECT_NE(log.find("Initialiazing sound [OK]\n"), std::string::npos) << log;
    for (const char* sound : {"Data/Sounds/Broll.wav", "Data/Sounds/intro.mp3", "Data/Sounds/Engine.wav"})
        EXPECT_NE(log.find(std::string("Loading soundeffects f : ") + sound + " [  ]\n"), std::string::npos)
            << sound << "\n" << log;
    EXPECT_EQ(verdict(log), " something went wrong! :(");
}

TEST_F(GameMissing, WithoutPicturesEveryMissingPictureIsReportedAndTheGameCloses) {
    fs::remove_all("Data/GUI");
    fs::remove_all("Data/Textures");
    fs::remove_all("Data/Ads");
    fs::remove_all("Data/Fonts");
    std::string log = startAndClose();
    for (const char* picture : {"Data/GUI/t.tga", "Data/GUI/0.tga", "Data/GUI/1.tga", "Data/GUI/main.tga",
                                "Data/GUI/about.tga", "Data/GUI/credits.tga", "Data/GUI/records.tga",
                                "Data/Textures/Tdirt1.tga", "Data/Textures/Tfence.tga", "Data/Textures/Finish.tga",
                                "Data/Fonts/Arial.tga"}) {
        EXPECT_NE(log.find(std::string("Loading texture f : ") + picture + " [  ]\n"), std::string::npos)
            << picture << "\n" << log;
        EXPECT_NE(output.find(std::string("NOT FOUND: ") + picture + "\n"), std::string::npos) << picture;
    }
    EXPECT_EQ(verdict(log), " something went wrong! :(");
}

// The backdrops of the About, Credits and Records screens load with
// everything else: a missing one is reported at the start, and turns the
// verdict, whether or not its screen is ever opened.
TEST_F(GameMissing, AMissingScreenBackdropIsReportedAtTheStart) {
    fs::remove("Data/GUI/credits.tga");
    std::string log = startAndClose();
    EXPECT_NE(log.find("Loading texture f : Data/GUI/credits.tga [  ]\n"), std::string::npos) << log;
    EXPECT_NE(output.find("NOT FOUND: Data/GUI/credits.tga\n"), std::string::npos) << output;
    EXPECT_NE(log.find("Loading texture f : Data/GUI/about.tga [OK]\n"), std::string::npos) << log;
    EXPECT_NE(log.find("Loading texture f : Data/GUI/records.tga [OK]\n"), std::string::npos) << log;
    EXPECT_EQ(verdict(log), " something went wrong! :(");
}

TEST_F(GameMissing, AMissingScreenshotsFolderDoesNotStopTheStart) {
    fs::remove_all("Data/Screenshots");
    fs::remove_all("Data/Highscore");
    fs::remove_all("Data/Ghosts");
    std::string log = startAndClose();
    // The start is whole; only the lap records and the ghost cannot be kept at
    // the end, and the log says which file.
    std::vector<std::string> failed;
    for (const std::string& line : lines(log))
        if (line.size() > 5 && line.compare(line.size() - 5, 5, " [  ]") == 0) failed.push_back(line);
    for (const std::string& line : failed) EXPECT_EQ(line.rfind("Saving Data/", 0), 0u) << line;
    EXPECT_NE(log.find("Saving Data/Highscore/"), std::string::npos) << log;
}

TEST_F(GameMissing, ADamagedPictureAndModelAreReportedAndTheGameCloses) {
    writeFile("Data/GUI/t.tga", std::string(18, '\xff'));
    writeFile("Data/Models/barrel.3DS", std::string("MM\x06\0", 4));
    std::string log = startAndClose();
    EXPECT_NE(log.find("Loading texture f : Data/GUI/t.tga (not a 24- or 32-bit picture of sensible size) [  ]"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("Loading model f : Data/Models/barrel.3DS [  ]"), std::string::npos) << log;
    EXPECT_EQ(verdict(log), " something went wrong! :(");
}

TEST_F(GameMissing, SqueezedToOnePixelAndBackTheWindowKeepsRunning) {
    GameProcess game(dir.path(), {"ALSOFT_CONF=" + waveConf(dir.path())});
    unsigned long id = game.window();
    ASSERT_NE(id, 0ul) << game.output();
    std::string w = std::to_string(id);
    run("xdotool windowsize --sync " + w + " 1 1 2>&1");
    EXPECT_NE(run("xdotool getwindowgeometry " + w).find("1x1"), std::string::npos);
    run("sleep 0.5; xdotool windowsize --sync " + w + " 1024 768 2>&1");
    EXPECT_NE(run("xdotool getwindowgeometry " + w).find("1024x768"), std::string::npos);
    run("sleep 0.5");
    // Still alive, still answering: it closes on request like an untouched window.
    EXPECT_NE(game.window(1), 0ul);
    game.closeWindow();
    EXPECT_EQ(game.wait(), 0) << game.output();
    std::string log = readFile("Data/blackbox.bvd");
    EXPECT_EQ(log.find(" [  ]"), std::string::npos) << log;
    EXPECT_EQ(verdict(log), " everything went smooth! :)");
}

}  // namespace
