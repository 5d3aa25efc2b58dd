// Faults sought: a project that comes back different, clips lost when a folder moves, damage that is taken
// for a project or crashes, a file that is half written.
#include "Engine/ProjectFile.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Engine/Failure.h"
#include "Tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using corvane::Project;
using ::testing::HasSubstr;

Project TwoClips(const fs::path& file) {
    Project project;
    project.sequence = {{720, 576}, {12, 11}, {25000, 1001}};
    project.Add("Gr\u00fc\u00df \"e\"", {.file = file, .settings = {}});
    project.Add("own", {.file = {}, .settings = "{\"a\":\n1.5}"});
    return project;
}

std::string FailureOf(const std::string& text) {
    try {
        corvane::ReadProject(text, "it.cvproj", "/");
    } catch (const corvane::Failure& failure) {
        return failure.what();
    }
    return {};
}

class ProjectFiles : public ::testing::Test {
  protected:
    ProjectFiles() {
        fs::create_directories(mFolder / "here/below");
        fs::create_directory(mFolder / "moved");
    }

    const corvane::testing::TestFolder mFolder;
};

TEST_F(ProjectFiles, WhatLiesBelowMovesWithTheProject) {
    for (const auto& [file, after] : {std::pair("here/a.synthex", "moved/there/a.synthex"),
                                      {"here/below/a.synthex", "moved/there/below/a.synthex"},
                                      {"a.synthex", "a.synthex"}}) {
        const Project project = TwoClips(mFolder / file);
        EXPECT_EQ(corvane::SaveProject(project, mFolder / "here/it.cvproj"), "");
        EXPECT_TRUE(corvane::LoadProject(mFolder / "here/it.cvproj").HoldsSameAs(project)) << file;
        fs::rename(mFolder / "here", mFolder / "moved/there");
        const Project moved = corvane::LoadProject(mFolder / "moved/there/it.cvproj");
        EXPECT_EQ(moved.clips[0]->source.file, mFolder / after);
        EXPECT_EQ(moved.clips[1]->source, project.clips[1]->source);
        fs::rename(mFolder / "moved/there", mFolder / "here");
    }
}

TEST_F(ProjectFiles, ATextCutAnywhereIsRefused) {
    const std::string text = corvane::WriteProject(TwoClips("/x/a.synthex"), {});
    EXPECT_EQ(FailureOf(text), "");
    for (std::size_t length = 0; length + 2 < text.size(); ++length)
        ASSERT_THAT(FailureOf(text.substr(0, length)),
                    HasSubstr("it.cvproj: this project can't be read: it is cut or damaged at"))
            << length;
}

TEST_F(ProjectFiles, WhatIsNoProjectOfThisVersionSaysWhy) {
    const std::string head = R"({"format":"corvane-project","version":1,)";
    const std::string sequence = R"("sequence":{"width":1,"height":1,"parNumerator":1,"parDenominator":1,)"
                                 R"("scale":1,"sampleSize":1},)";
    const std::pair<std::string, const char*> kRows[] = {
        {"[]", "no project"},
        {"{}", "no project"},
        {R"({"format":"corvane-project"})", "\"version\" is missing"},
        {R"({"format":"corvane-project","version":2})", "update Synthex"},
        {R"({"format":"corvane-project","version":18446744073709551615})", "update Synthex"},
        {R"({"format":"corvane-project","version":0})", "\"version\""},
        {head + R"("clips":[]})", "\"sequence\" is missing"},
        {head + R"("sequence":{"width":-1},"clips":[]})", "\"width\""},
        {head + R"("sequence":{"width":4294967296},"clips":[]})", "\"width\""},
        {head + sequence + R"("clips":{}})", "no list"},
        {head + sequence + R"("clips":[7]})", "no object"},
        {head + sequence + R"("clips":[{"name":"x"}]})", "\"settings\" is missing"},
        {head + sequence + R"("clips":[{"name":1,"file":"x"}]})", "\"name\" is no text"},
        {head + sequence + R"("clips":[{"name":"x","file":""}]})", "\"file\" is empty"},
        {std::string(200000, '['), "deeper than 256 levels"},
        {R"({"x":)" + std::string(200000, '['), "deeper than 256 levels"},
        {R"({"x":1e400})", "damaged at byte 10 of 11"},
    };
    for (const auto& [text, why] : kRows)
        EXPECT_THAT(FailureOf(text), ::testing::AllOf(HasSubstr("it.cvproj: "), HasSubstr(why)))
            << text.substr(0, 200);
    // Members that nobody reads. Looked up one by one, so many would take minutes.
    std::string later;
    for (int i = 0; i < 1000000; ++i) later += fmt::format(",\"{}\":{{}}", i);
    EXPECT_EQ(FailureOf(head + sequence + R"("clips":[{"file":"x","name":"x")" + later + "}]" + later + "}"),
              "");
}

TEST_F(ProjectFiles, WhatIsNoFileOfTextSaysWhy) {
    for (const fs::path& path : {mFolder.Path(), mFolder / "none", fs::path("/dev/zero")})
        EXPECT_THROW(corvane::LoadProject(path), corvane::Failure) << path;
    const fs::path large = mFolder.Write("large", "");
    fs::resize_file(large, (64u << 20) + 1);
    EXPECT_THAT([&] { corvane::LoadProject(large); },
                ::testing::ThrowsMessage<corvane::Failure>(HasSubstr("more than")));
    EXPECT_THROW(std::ignore = corvane::SaveProject({}, mFolder / "none/it.cvproj"), corvane::Failure);
    Project project;
    project.Add("\xff", {});
    fs::create_hard_link(large, mFolder / "it.cvproj");
    EXPECT_THAT(corvane::SaveProject({}, mFolder / "it.cvproj"), HasSubstr("hard links"));
    EXPECT_THROW(std::ignore = corvane::SaveProject(project, mFolder / "it.cvproj"), corvane::Failure);
    project.clips.clear();
    project.Add(std::string(64u << 20, 'x'), {});
    EXPECT_THROW(std::ignore = corvane::SaveProject(project, mFolder / "it.cvproj"), corvane::Failure);
    const corvane::testing::FullDisk full(99);
    EXPECT_THAT([&] { std::ignore = corvane::SaveProject(TwoClips("/a"), mFolder / "it.cvproj"); },
                ::testing::ThrowsMessage<corvane::Failure>(HasSubstr("size limit; raise it")));
    EXPECT_TRUE(corvane::LoadProject(mFolder / "it.cvproj").clips.empty());
}

TEST(Project, AChangeLeavesCopiesAlone) {
    Project project = TwoClips("/a");
    const Project before = project;
    const std::uint64_t first = project.clips[0]->id, second = project.clips[1]->id;
    project.SetSource(first, {.file = {}, .settings = "{}"});
    EXPECT_FALSE(project.HoldsSameAs(before));
    project.Rename(second, project.FreeName("own"));
    EXPECT_EQ(project.clips[1]->name, "own 2");
    EXPECT_EQ(before.clips[1]->name, "own");
    EXPECT_TRUE(before.clips[0]->source.IsFile());
    project.Remove(first);
    EXPECT_NE(project.Add("new", {}, 0), first) << "an undone change would find another clip under its id";
    EXPECT_EQ(project.clips[1]->id, second);
}

} // namespace
