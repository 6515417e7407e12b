// The event log, byte for byte.

#include <gtest/gtest.h>

#include <ctime>
#include <regex>

#include "shell/blackbox.h"
#include "support/bvtest_fixtures.h"

using namespace bvtest;

sBlackbox& log_() { return blackbox; }

namespace {

// " " + ctime(): " Sun Nov 22 12:38:04 2026"
const std::regex kDate(R"( [A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d \d{4})");

TEST(Blackbox, WritesHeaderTasksMessagesAndVerdict) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    blackbox.task("Initializing configuration", true);
    blackbox.task("Initialiazing sound", true);
    blackbox.msg("an indented note");
    blackbox.free();

    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    ASSERT_EQ(l.size(), 7u);
    EXPECT_TRUE(std::regex_match(l[0], kDate)) << l[0];
    EXPECT_EQ(l[1], " Brontevalle v1.02b3 | the Brontevalle team <team@brontevalle.example.org>, "
                    "https://brontevalle.example.org");
    EXPECT_EQ(l[2], "Initializing configuration [OK]");
    EXPECT_EQ(l[3], "Initialiazing sound [OK]");
    EXPECT_EQ(l[4], " an indented note");
    EXPECT_EQ(l[5], " everything went smooth! :)");
    EXPECT_TRUE(std::regex_match(l[6], kDate)) << l[6];
    EXPECT_EQ(readFile("Data/blackbox.bvd").back(), '\n');
}

TEST(Blackbox, FailedTaskTurnsTheVerdict) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    blackbox.task("Initialiazing sound", false);
    EXPECT_FALSE(blackbox.status);
    blackbox.task("Loading texture f : Data/GUI/t.tga", true);
    blackbox.free();
    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    ASSERT_EQ(l.size(), 6u);
    EXPECT_EQ(l[2], "Initialiazing sound [  ]");
    EXPECT_EQ(l[3], "Loading texture f : Data/GUI/t.tga [OK]");
    EXPECT_EQ(l[4], " something went wrong! :(");
}

TEST(Blackbox, ConsoleTaskNeverTurnsTheVerdictNorBecomesLastTask) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    EXPECT_STREQ(blackbox.last_task, "");
    const char* text = "Initializing video mode";
    blackbox.task(text, true);
    blackbox.consoletask("SET nosuchvariable 3", false);
    EXPECT_TRUE(blackbox.status);
    EXPECT_STREQ(blackbox.last_task, text);
    blackbox.free();
    std::vector<std::string> l = lines(readFile("Data/blackbox.bvd"));
    EXPECT_EQ(l[3], "SET nosuchvariable 3 [  ]");
    EXPECT_EQ(l[4], " everything went smooth! :)");
}

TEST(Blackbox, TheLastTaskOutlivesTheCallersText) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    {
        std::string text = "Loading texture f : Data/GUI/gone.tga";
        blackbox.task(text.c_str(), false);
        text.assign(text.size(), 'x');
    }
    EXPECT_STREQ(blackbox.last_task, "Loading texture f : Data/GUI/gone.tga");
    std::string longer(400, 'L');
    blackbox.task(longer.c_str(), true);
    EXPECT_EQ(std::string(blackbox.last_task), longer.substr(0, sizeof blackbox.last_task - 1));
    blackbox.init("Data/blackbox.bvd", false);
    EXPECT_STREQ(blackbox.last_task, "");
}

TEST(Blackbox, SecondRunDiscardsTheFirst) {
    ScratchDir dir;
    blackbox.init("Data/blackbox.bvd", false);
    blackbox.task("first run only", true);
    blackbox.free();
    blackbox.init("Data/blackbox.bvd", false);
    blackbox.task("second run", true);
    blackbox.free();
    std::string text = readFile("Data/blackbox.bvd");
    EXPECT_EQ(text.find("first run only"), std::string::npos);
    EXPECT_EQ(lines(text).size(), 5u);
    EXPECT_EQ(lines(text)[2], "second run [OK]");
}

TEST(Blackbox, EchoesToStandardOutputWhenAsked) {
    ScratchDir dir;
    testing::internal::CaptureStdout();
    blackbox.init("Data/blackbox.bvd", true);
    blackbox.task("echoed", false);
    std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("echoed [  ]\n"), std::string::npos);
    EXPECT_NE(out.find(" Brontevalle v1.02b3 | "), std::string::npos);
}

TEST(Blackbox, UnwritableFileLosesLinesQuietly) {
    ScratchDir dir;
    blackbox.init("no/such/dir/blackbox.bvd", false);
    blackbox.task("lost", false);
    blackbox.free();
    EXPECT_FALSE(fileExists("no/such/dir/blackbox.bvd"));
}

}  // namespace
