// Faults sought: bytes that are not the plug-in's, files half written by a full disk, a signal or a reader
// that went away, older files lost by them, reports that end up in a file.
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Render, NativeBytesAreThePluginsOwn) {
    // Two progressive frames of one color: blue 64, green 128, red 255, alpha 51.
    const TestFolder folder;
    const fs::path clip =
        folder.Write("clip.synthex", SettingsText(R"(,"mFieldType":0,"mUpperFieldColor":{"mAlphaPart":0.2,)"
                                                  R"("mRedPart":1,"mGreenPart":0.5,"mBluePart":0.25})"));
    const auto result = RunSynthex({"render", clip, "-", "--format", "RAW", "--native", "--frames", "03:4"});
    EXPECT_EQ(std::pair(result.status, result.err), std::pair(0, std::string()));
    std::string wanted;
    for (int pixel = 0; pixel < 2 * 64 * 48; ++pixel) wanted += "\x40\x80\xFF\x33";
    EXPECT_TRUE(result.out == wanted);
}

TEST(Render, ColorsBeyondAllBoundsRender) {
    const TestFolder folder;
    for (const char* const format : {"1634887522", "1281443650", "825307766"})
        for (const char* const kind : {"png", "y4m"}) {
            const std::string text =
                fmt::format(R"(,"mPixelFormat":{},"mRenderFormat":1,)"
                            R"("mTopGradiantColorStart":{{"mRedPart":1e300,"mAlphaPart":-1e300}},)"
                            R"("mTopGradiantColorEnd":{{"mRedPart":-1e300,"mGreenPart":1e-320}})",
                            format);
            const fs::path clip = folder.Write("clip.synthex", SettingsText(text));
            EXPECT_EQ(RunSynthex({"render", clip, "-", "--format", kind, "--frames", "5"}).status, 0)
                << format;
        }
}

TEST(Render, ASignalLeavesTheOlderFileAndASecondOneEndsAtOnce) {
    const std::tuple<const char*, int, bool> rows[] = {{"out.raw", SIGINT, false},
                                                       {"out.mp4", SIGTERM, false},
                                                       {"out.mp4", SIGINT, true},
                                                       {"out.%05d.png", SIGINT, false}};
    for (const auto& [name, signal, twice] : rows) {
        SCOPED_TRACE(testing::Message() << name << " " << signal);
        const TestFolder folder;
        const fs::path out = folder.Write(name, "older");
        const int watch = ::inotify_init1(IN_CLOEXEC);
        ::inotify_add_watch(watch, folder.Path().c_str(), IN_MODIFY);
        pollfd begun{watch, POLLIN, 0};
        // A full pipe holds the program when it tells of the first signal.
        const TestFolder streams;
        const fs::path pipe = streams / "err";
        ::mkfifo(pipe.c_str(), 0600);
        const int full = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        while (::write(full, &begun, 1) == 1) continue;
        Process process(Synthex({"render", Sample("uhd-5994"), out}),
                        {.redirections = twice ? "2>" + pipe.string() : ""});
        EXPECT_EQ(::poll(&begun, 1, 30000), 1) << "nothing was written";
        if (twice) process.Signal(SIGTERM);
        process.Signal(signal);
        const ProcessResult result = process.Wait();
        ::close(watch);
        ::close(full);
        if (twice) {
            EXPECT_THAT(result.status, AnyOf(128 + signal, 128 + SIGTERM)) << "whichever came last";
        } else {
            EXPECT_EQ(result.status, 128 + signal);
            EXPECT_THAT(result.err,
                        AllOf(StartsWith("synthex: " + out.string() + ": "), HasSubstr("cancelled")));
        }
        EXPECT_THAT(folder.Names(), ElementsAre(name));
        EXPECT_EQ(ReadFile(out), "older");
    }
}

TEST(Render, SaysWhatIsLost) {
    const TestFolder folder;
    for (const char* const name : {"1.png", "%d.png"}) {
        fs::remove(folder / "1.png");
        fs::create_hard_link(folder.Write("other", "older"), folder / "1.png");
        EXPECT_THAT(RunSynthex({"render", Sample("defaults"), folder / name, "--frames", "1:1"}).out,
                    HasSubstr("hard links"));
    }
    for (const auto& [name, isLost] : {std::pair("alpha-gradient", true), std::pair("defaults", false)})
        EXPECT_EQ(RunSynthex({"render", Sample(name), folder / "a.y4m", "--frames", "0"})
                      .out.ends_with(", without the clip's alpha\n"),
                  isLost)
            << name;
}

TEST(Render, AFullDiskIsToldWithTheRemedy) {
    const TestFolder folder;
    const std::string clip = Sample("gradient-23976"), out = folder.Write("out.y4m", "older");
    for (const char* const name : {"out.y4m", "out.raw", "out.%d.png", "out.mp4", "out.mkv"})
        ExpectRefused({"render", clip, folder / name}, 1, folder / "out.", "size limit; raise it",
                      {.fileSize = 99});
    EXPECT_THAT(folder.Names(), ElementsAre("out.y4m"));
    ExpectRefused({"render", clip, "/dev/full", "--format", "y4m"}, 1,
                  "/dev/full: ", "full; free some space");
    EXPECT_EQ(ReadFile(out), "older");
}

TEST(Render, FilesAreNotTakenForStreamsThatWereClosed) {
    for (const char* const name : {"out.raw", "out.png", "out.mp4"}) {
        const TestFolder folder;
        const std::vector<std::string> arguments = {"render", Sample("defaults"), folder / name, "--frames",
                                                    "0"};
        ASSERT_EQ(RunSynthex(arguments).status, 0);
        const std::string whole = ReadFile(folder / name);
        RunSynthex(arguments, {.redirections = "<&- >&- 2>&-"});
        EXPECT_TRUE(ReadFile(folder / name) == whole) << name;
    }
}

TEST(Render, ThreadsThatCanNotBeStartedAreDoneWithout) {
    if (IsSanitized()) GTEST_SKIP();
    const TestFolder folder;
    const ProcessResult result =
        RunSynthex({"render", Sample("defaults"), folder / "out.raw", "--native", "--jobs", "512"},
                   {.addressSpace = 512u << 20});
    EXPECT_LE(result.status, 1) << result.err;
    EXPECT_EQ(folder.Names().size(), 1 - static_cast<unsigned>(result.status));
    if (::geteuid() != 0 || !RunsUnprivileged()) return; // else all of the user's programs count
    fs::permissions(folder.Path(), fs::perms::all);
    // These two would wait for the threads for ever.
    for (const auto& [codec, processes, needed] : {std::tuple("libx265", 1u, "needs a thread"),
                                                   {"libx265", 2u, ""},
                                                   {"libsvtav1", 16u, "needs 16 threads"},
                                                   {"libsvtav1", 17u, ""}}) {
        const ProcessResult few = RunSynthex(
            {"render", Sample("defaults"), folder / "out.mkv", "--frames", "0:1", "--codec", codec},
            {.processes = processes});
        EXPECT_EQ(few.status, *needed != '\0') << codec << ' ' << processes << few.err;
        EXPECT_THAT(few.err, HasSubstr(needed));
    }
}

// Catches frames that the plug-in takes for others: it would print -2147483648 on the first one too many.
TEST(Render, FrameNumbersEndWhereThePluginsDo) {
    const TestFolder folder;
    const std::string clip = folder.Write(
        "clip.synthex",
        SettingsText(
            R"(,"mVideoDuration":{"ticks":3000000000000},"mVideoFrameRate":{"ticksperframe":1000})"));
    EXPECT_EQ(RunSynthex({"render", clip, folder / "a.png", "--frames", "2147483647"}).status, 0);
    for (const char* const frames : {"2147483648", "0:2147483648"})
        ExpectRefused({"render", clip, folder / "a.%d.png", "--frames", frames}, 2,
                      clip + ": frame 2147483648", "up to 2147483647");
}

// Catches memory that grows with the threads: each would have frames of 32 MB.
TEST(Render, FramesOnTheirWayKeepToTheMemoryThatTheyMayTake) {
    if (IsSanitized()) GTEST_SKIP();
    const TestFolder folder;
    const auto peak = [&](const char* memory) {
        return RunSynthex({"render", Sample("uhd-5994"), folder / "a.%d.png", "--jobs", "8", "--memory",
                           memory, "--frames", "0:31"})
            .peakMiB;
    };
    EXPECT_LT(peak("100M"), 100); // one frame of 32 MiB
    EXPECT_GT(peak("4G"), 150);   // how many at once depends on the other programs of the machine
}

TEST(Render, AReaderThatDoesNotReadCanBeLeftBySignal) {
    // Nobody reads: the pipe is full after a part of the first frame.
    const TestFolder folder;
    const fs::path fifo = folder / "fifo";
    ::mkfifo(fifo.c_str(), 0600);
    const int reader = ::open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    Process process(Synthex({"render", Sample("uhd-5994"), fifo, "--format", "raw"}));
    pollfd written{reader, POLLIN, 0};
    ASSERT_EQ(::poll(&written, 1, 30000), 1) << "nothing was written";
    process.Signal(SIGINT);
    EXPECT_EQ(process.Wait().status, 1000 + SIGINT);
    ::close(reader);
}

TEST(Render, AReaderThatGoesAwayIsAFailure) {
    for (const char* const format : {"raw", "y4m"}) {
        Process process(Synthex({"render", Sample("uhd-5994"), "-", "--format", format}));
        process.CloseOutput();
        const ProcessResult result = process.Wait();
        EXPECT_EQ(result.status, 1) << format;
        EXPECT_THAT(result.err, StartsWith("synthex: standard output: the reader closed the pipe")) << format;
    }
}

TEST(Render, ProgressIsShownOnATerminalAndNowhereElse) {
    const TestFolder folder;
    std::vector<std::string> arguments = {"render", Sample("defaults"), folder / "out.raw", "--frames",
                                          "0:9"};
    EXPECT_EQ(RunSynthex(arguments).err, "");
    EXPECT_THAT(RunSynthex(arguments, {.terminal = true}).err,
                AllOf(HasSubstr("10/10 frames"), HasSubstr(" left"), testing::EndsWith("\r\x1b[K")));
    arguments.push_back("--quiet");
    const ProcessResult quiet = RunSynthex(arguments, {.terminal = true});
    EXPECT_EQ(quiet.err + quiet.out, "");
}

} // namespace
