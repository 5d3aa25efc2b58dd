// Faults sought: bytes that are not the plug-in's, files half written by a full
// disk, a signal or a reader that went away, and older files lost by them.
#include <csignal>
#include <cstring>

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
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Render, NativeBytesAreThePluginsOwn) {
    // Two progressive frames of one color: blue 64, green 128, red 255, alpha 51.
    const TestFolder folder;
    const fs::path clip =
        folder.Write("clip.synthex", SettingsText(R"(,"mFieldType":0,"mUpperFieldColor":{"mAlphaPart":0.2,)"
                                                  R"("mRedPart":1,"mGreenPart":0.5,"mBluePart":0.25})"));
    const ProcessResult result =
        RunSynthex({"render", clip, "-", "--format", "raw", "--native", "--frames", "3:4"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    std::string wanted;
    for (int pixel = 0; pixel < 2 * 64 * 48; ++pixel) wanted += "\x40\x80\xFF\x33";
    EXPECT_TRUE(result.out == wanted);
}

TEST(Render, ColorsBeyondAllBoundsRender) {
    const TestFolder folder;
    for (const char* const format : {"1634887522", "1281443650", "825307766"}) {
        const fs::path clip = folder.Write(
            "clip.synthex",
            SettingsText(fmt::format(R"(,"mPixelFormat":{},"mRenderFormat":1,)"
                                     R"("mTopGradiantColorStart":{{"mRedPart":1e300,"mAlphaPart":-1e300}},)"
                                     R"("mTopGradiantColorEnd":{{"mRedPart":-1e300,"mGreenPart":1e-320}})",
                                     format)));
        for (const char* const suffix : {"png", "y4m"}) {
            const fs::path out = folder / fmt::format("out.{}", suffix);
            const ProcessResult result = RunSynthex({"render", clip, out, "--frames", "5"});
            EXPECT_EQ(result.status, 0) << format << suffix << result.err;
        }
    }
}

TEST(Render, WhatCanNotBeWrittenIsNamedAndLeavesNothing) {
    const TestFolder folder;
    fs::create_directory(folder / "folder.raw");
    fs::create_directory(folder / "closed");
    fs::permissions(folder / "closed", fs::perms(0555));
    const auto expectRefused = [&](const std::string& name, const char* said, const ProcessOptions& options) {
        const fs::path out = folder.Path() / name;
        ExpectRefused({"render", Sample("defaults"), out, "--frames", "0:9"}, 1, out.parent_path(), said,
                      options);
    };
    expectRefused("none/out.raw", "make it first", {});
    expectRefused("folder.raw", "name a file", {});
    if (RunsUnprivileged()) // root may write there
        for (const char* const name : {"raw", "y4m", "mp4", "%d.png"})
            expectRefused(std::string("closed/out.") + name, "may not be written to", {.unprivileged = true});
    EXPECT_THAT(folder.Names(), ElementsAre("closed", "folder.raw"));
    EXPECT_TRUE(fs::is_empty(folder / "closed"));
}

TEST(Render, AFullDiskLeavesTheOlderFile) {
    for (const char* const name : {"out.raw", "out.y4m", "out.png", "out.mp4", "out.mkv"}) {
        SCOPED_TRACE(name);
        const TestFolder folder;
        const fs::path out = folder.Write(name, "older");
        const char* const frames = out.extension() == ".png" ? "0" : "0:9";
        // A multiple of a disk's blocks, as a disk's end is.
        const ProcessResult result =
            RunSynthex({"render", Sample("gradient-23976"), out, "--frames", frames}, {.fileSize = 4096});
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.err, AllOf(StartsWith("synthex: " + out.string() + ": "), HasSubstr("limit")));
        EXPECT_THAT(folder.Names(), ElementsAre(name));
        EXPECT_EQ(ReadFile(out), "older");
    }
}

TEST(Render, ASignalLeavesTheOlderFile) {
    for (const auto& [name, number] :
         {std::pair("out.raw", SIGINT), {"out.mp4", SIGTERM}, {"out.%05d.png", SIGINT}}) {
        SCOPED_TRACE(name);
        const TestFolder folder;
        const fs::path out = folder.Write(name, "older");
        const int watch = ::inotify_init1(IN_CLOEXEC);
        ::inotify_add_watch(watch, folder.Path().c_str(), IN_CREATE);
        Process process(Synthex({"render", Sample("uhd-5994"), out}));
        pollfd created{watch, POLLIN, 0};
        ASSERT_EQ(::poll(&created, 1, 30000), 1) << "no temporary file was made";
        process.Signal(number);
        const ProcessResult result = process.Wait();
        ::close(watch);
        EXPECT_EQ(result.status, 128 + number);
        EXPECT_THAT(result.err, HasSubstr("cancelled"));
        EXPECT_THAT(folder.Names(), ElementsAre(name));
        EXPECT_EQ(ReadFile(out), "older");
    }
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
