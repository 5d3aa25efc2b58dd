// Faults sought: hashes that decoders don't get, members that are made twice or not again, a manifest that
// depends on how often a run was killed, files that are half written or left behind, one failed member that
// stops the rest, checks that see nothing.
#include <csignal>
#include <cstdlib>
#include <map>
#include <sstream>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Export/Processors.h"
#include "Sweep/Manifest.h"
#include "Tests/Export/TestClips.h"
#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Arguments = std::vector<std::string>;

/// A small clip in a folder, and a family of it.
struct Made {
    explicit Made(Arguments varied, const std::string& output)
        : clip(folder.Write("clip.synthex", SettingsText(R"(,"mRenderFormat":1)"))),
          arguments{"sweep", clip, folder / "out" / output, "--quiet"} {
        arguments.insert(arguments.end(), varied.begin(), varied.end());
    }
    ProcessResult Run(const Arguments& more = {}, const ProcessOptions& options = {}) const {
        Arguments all = arguments;
        all.insert(all.end(), more.begin(), more.end());
        return RunSynthex(all, options);
    }
    fs::path Manifest() const { return folder / "out" / corvane::kManifestName; }
    json Members() const { return json::parse(ReadFile(Manifest()))["members"]; }
    /// When each file was made.
    std::map<std::string, fs::file_time_type> Times() const {
        std::map<std::string, fs::file_time_type> times;
        for (const auto& entry : fs::directory_iterator(folder / "out"))
            if (entry.is_regular_file()) times[entry.path().filename()] = entry.last_write_time();
        times.erase(corvane::kManifestName);
        return times;
    }
    /// The same of the entries of parts.
    std::map<std::string, fs::file_time_type> PartTimes() const {
        std::map<std::string, fs::file_time_type> times;
        std::error_code error;
        for (const auto& parts : fs::directory_iterator(folder / "out" / corvane::kEntriesName, error))
            for (const auto& entry : fs::directory_iterator(parts.path() / corvane::kEntriesName, error))
                if (entry.path().extension() == ".json")
                    times[entry.path()] = fs::last_write_time(entry.path(), error);
        return times;
    }

    TestFolder folder;
    fs::path clip;
    Arguments arguments;
};

TEST(Sweep, HashesAreThoseOfAnyDecoder) {
    const char* const kFormats = "format=bgrx,BGra,VUYA";
    const std::pair<Arguments, const char*> kRows[] = {
        {{"--codec", "ffv1,v210,ffv1:pix_fmt=bgr0"}, "{fields}-{format}.{codec}"},
        {{"--vary", "container=png,y4m", "--vary", "size=47x33"}, "{fields}-{format}.%d.{container}"}};
    for (const auto& [varied, name] : kRows) {
        const Made made(varied, name);
        ASSERT_EQ(made.Run({"--vary", kFormats, "--vary", "fields=progressive,lower"}).status, 0);
        for (const json& member : made.Members()) {
            std::vector<std::string> hashes;
            std::istringstream lines(corvane::testing::OutputOf(
                fmt::format("ffmpeg -v error -strict -1 -i '{}' -f framemd5 -",
                            (made.folder / "out" / member["output"].get<std::string>()).string())));
            for (std::string line; std::getline(lines, line);)
                if (!line.starts_with('#')) hashes.push_back(line.substr(line.rfind(' ') + 1));
            EXPECT_EQ(hashes.size(), 10u) << member["output"];
            EXPECT_EQ(hashes, member["frames"]) << member["output"];
        }
    }
}

TEST(Sweep, IsTheSameHoweverOftenItIsKilled) {
    const Arguments varied{"--vary", "rate=24,25,30",        "--vary",  "fields=progressive,upper,lower",
                           "--vary", "size=320x240,640x480", "--codec", "ffv1,prores"};
    const Made one(varied, "{rate}-{fields}-{size}.{codec}"),
        killed(varied, "{rate}-{fields}-{size}.{codec}");
    ASSERT_EQ(one.Run().status, 0);
    std::map<std::string, fs::file_time_type> before;
    for (const std::size_t files : {3u, 20u, 40u}) {
        const Process process(Synthex(killed.arguments));
        while (!fs::exists(killed.folder / "out") || killed.Times().size() < files) ::usleep(500);
        process.Signal(SIGKILL);
        for (const auto& [name, time] : before) EXPECT_EQ(killed.Times()[name], time) << name;
        before = killed.Times();
    }
    ASSERT_EQ(killed.Run().status, 0);
    for (const auto& [name, time] : before) EXPECT_EQ(killed.Times()[name], time) << name;
    EXPECT_EQ(ReadFile(killed.Manifest()), ReadFile(one.Manifest()));
    EXPECT_EQ(killed.Times().size(), 54u);
    EXPECT_FALSE(fs::exists(killed.folder / "out" / corvane::kEntriesName));
    EXPECT_EQ(RunSynthex({"sweep", "--check", killed.Manifest()}).status, 0);
}

TEST(Sweep, PartsMakeTheClipOfOnePieceHoweverOftenTheyAreKilled) {
    for (const char* const name : {"a.mkv", "a.y4m", "a.%d.png"}) {
        Arguments varied{"--vary", "size=320x240", "--vary", "frames=240"};
        if (std::string_view(name) == "a.mkv") varied.insert(varied.end(), {"--codec", "ffv1"});
        const Made one(varied, name);
        Made parts(varied, name);
        parts.arguments.insert(parts.arguments.end(), {"--split", "9"});
        ASSERT_EQ(one.Run().status, 0);
        for (const std::size_t made : {1u, 3u, 6u}) {
            const auto before = parts.PartTimes();
            const Process process(Synthex(parts.arguments));
            while (parts.PartTimes().size() < made && !fs::exists(parts.Manifest())) ::usleep(500);
            process.Signal(SIGKILL);
            auto after = parts.PartTimes();
            for (const auto& [part, time] : before) EXPECT_EQ(after[part], time) << part;
        }
        EXPECT_EQ(parts.Run({"--only", "2:4"}).status, 0);
        EXPECT_EQ(parts.Run().status, 0);
        EXPECT_EQ(std::system(fmt::format("diff -r '{}' '{}'", (one.folder / "out").string(),
                                          (parts.folder / "out").string())
                                  .c_str()),
                  0);
    }
    const Made made({"--vary", "rate=24,25"}, "{rate}.mkv");
    ExpectRefused({"sweep", made.clip, made.folder / "a.mp4", "--split", "2"}, 2,
                  (made.folder / "a.mp4").string(), "can't be joined without encoding again");
    EXPECT_THAT(made.Run({"--split", "2"}).err, HasSubstr("one clip can be split, and these are 2"));
}

TEST(Sweep, VideosAreComparedMemberByMember) {
    const Made made({"--codec", "ffv1", "--vary", "rate=24,25,30"}, "{rate}.mkv");
    ASSERT_EQ(made.Run().status, 0);
    const fs::path out = made.folder / "out", videos = made.folder / "videos";
    fs::create_directory(videos);
    fs::copy(out / "24.mkv", videos);
    fs::copy(out / "25.mkv", videos / "25.nut");
    made.folder.Write("videos/25.txt", "");
    ProcessResult result = RunSynthex({"compare", out, videos});
    EXPECT_EQ(result.status, 1);
    for (const char* const name : {"24.mkv", "25.mkv"})
        EXPECT_THAT(result.out, HasSubstr(fmt::format("{}: Nothing beyond", name)));
    EXPECT_THAT(result.err, HasSubstr("30.mkv: this video is missing"));
    fs::copy(out / "24.mkv", videos / "30.mkv");
    result = RunSynthex({"compare", made.Manifest(), videos, "--json", "--report", made.folder / "pages"});
    EXPECT_EQ(result.status, 4) << result.err;
    const json members = json::parse(result.out)["members"];
    EXPECT_THAT(members[1]["findings"], IsEmpty());
    EXPECT_EQ(members[2]["findings"][0]["kind"], "time.rate");
    EXPECT_THAT(ReadFile(made.folder / "pages/index.html"), HasSubstr("<a href='30.mkv.html'>"));
    EXPECT_TRUE(fs::exists(made.folder / "pages/30.mkv.html"));
    ExpectRefused({"compare", videos, videos}, 1, (videos / "manifest.json").string(),
                  "make the family first");
}

TEST(Sweep, TasksOfAJobTakeNoMoreThanTheirProcessors) {
    const unsigned all = corvane::Processors();
    for (const auto& [word, processors] : {std::pair("1", 1u), {"0", all}, {"many", all}, {"100000", all}}) {
        ::setenv("SLURM_CPUS_ON_NODE", word, 1);
        EXPECT_EQ(corvane::Processors(), processors) << word;
    }
    ::unsetenv("SLURM_CPUS_ON_NODE");
}

TEST(Sweep, MakesAgainWhatIsMissingOrWasMadeByOtherSettings) {
    const Made made({"--vary", "fields=upper,lower", "--vary", "container=mkv,raw"}, "{fields}.{container}");
    ASSERT_EQ(made.Run().status, 0);
    const std::string manifest = ReadFile(made.Manifest());
    auto before = made.Times();
    fs::remove(made.folder / "out/upper.mkv");
    fs::remove(made.folder / "out/clip-lower.synthex");
    EXPECT_EQ(made.Run().status, 0);
    auto after = made.Times();
    for (const char* const name : {"upper.mkv", "clip-lower.synthex"})
        EXPECT_NE(before[name], after[name]) << name;
    for (const char* const name : {"lower.mkv", "lower.raw", "upper.raw"})
        EXPECT_EQ(before[name], after[name]);
    EXPECT_EQ(ReadFile(made.Manifest()), manifest);

    made.folder.Write("clip.synthex", SettingsText(R"(,"mRenderFormat":0)")); // the sizes stay
    EXPECT_EQ(made.Run({"--only", "1:2"}).status, 0);
    EXPECT_EQ(ReadFile(made.Manifest()), manifest);
    before = made.Times();
    EXPECT_EQ(made.Run().status, 0);
    after = made.Times();
    for (const char* const name : {"upper.mkv", "lower.raw"}) EXPECT_NE(before[name], after[name]) << name;
    for (const char* const name : {"upper.raw", "lower.mkv"}) EXPECT_EQ(before[name], after[name]) << name;
    EXPECT_EQ(made.Members().size(), 4u);
    EXPECT_NE(ReadFile(made.Manifest()), manifest);
}

TEST(Sweep, ChecksSeeWhatIsMissingChangedOrNew) {
    const Made made({"--vary", "fields=upper,lower", "--vary", "frames=2"}, "{fields}.raw");
    ASSERT_EQ(made.Run().status, 0);
    const auto check = [&] { return RunSynthex({"sweep", "--check", made.folder / "out"}); };
    made.folder.Write("out/new.txt", "");
    EXPECT_THAT(check().out, HasSubstr("new.txt: is not in the manifest\n"));
    EXPECT_EQ(check().status, 0);
    std::string raw = ReadFile(made.folder / "out/upper.raw");
    raw[5000] ^= 1;
    made.folder.Write("out/upper.raw", raw);
    made.folder.Write("out/lower.raw", "short");
    made.folder.Write("out/clip-upper.synthex", "{}");
    fs::remove(made.folder / "out/clip-lower.synthex");
    const ProcessResult result = check();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.out,
                AllOf(HasSubstr("upper.raw: has other bytes\n"), HasSubstr("lower.raw: has 5 bytes"),
                      HasSubstr("clip-upper.synthex: has other settings\n"),
                      HasSubstr("clip-lower.synthex: is missing\n")));
}

TEST(Sweep, WhatFailsIsToldAndDoesNotStopTheRest) {
    const Made made({"--vary", "size=64x48,63x47", "--codec", "h264,ffv1"}, "{size}.{codec}");
    ProcessResult result = made.Run();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("63x47.h264.mp4: libx264 can't encode frames of 63x47")));
    EXPECT_EQ(made.Members().size(), 3u);
    EXPECT_THAT(RunSynthex({"sweep", "--check", made.Manifest()}).out, HasSubstr("it has 3 of 4 members"));
}

TEST(Sweep, OneAtATimeWorksInAFolder) {
    const Made made({}, "a.mkv");
    fs::create_directories(made.folder / "out/.synthex-sweep");
    const corvane::FileDescriptor lock(made.folder / "out/.synthex-sweep/lock", O_RDWR | O_CREAT, 0666);
    ASSERT_EQ(::flock(lock.Get(), LOCK_SH), 0);
    ExpectRefused(made.arguments, 1, (made.folder / "out").string(),
                  "another sweep is at work in this folder");
    EXPECT_EQ(made.Run({"--only", "0"}).status, 0);
    ASSERT_EQ(::flock(lock.Get(), LOCK_UN), 0);
    const fs::path older = made.folder.Write("out/manifest.json", "{\n\"version\": 2,\n");
    ExpectRefused(made.arguments, 1, older.string(),
                  "of version 2, and this program reads 1; use the newer program");
    made.folder.Write("out/manifest.json", "{}");
    ExpectRefused(made.arguments, 1, older.string(), "this is no manifest");
}

} // namespace
