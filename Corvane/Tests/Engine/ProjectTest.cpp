// Faults sought: a project that comes back different, clips lost when a folder moves, damage that is taken
// for a project or crashes, a file that is half written.
#include "Engine/ProjectFile.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Engine/Failure.h"
#include "Engine/TextFile.h"

namespace {

namespace fs = std::filesystem;
using corvane::Project;
using testing::HasSubstr;

Project TwoClips(const fs::path& file) {
    Project project;
    project.sequence = {.width = 720,
                        .height = 576,
                        .parNumerator = 12,
                        .parDenominator = 11,
                        .scale = 25000,
                        .sampleSize = 1001};
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

class ProjectFiles : public testing::Test {
  protected:
    ProjectFiles() { fs::create_directories(mFolder / "here/below"); }
    ~ProjectFiles() override { fs::remove_all(mFolder); }

    const fs::path mFolder = fs::path(testing::TempDir()) / ("project" + std::to_string(::getpid()));
};

TEST_F(ProjectFiles, WhatLiesBelowMovesWithTheProject) {
    struct Row {
        const char *file, *after;
    };
    for (const auto& [file, after] :
         {Row{"here/a.synthex", "there/a.synthex"}, Row{"here/below/a.synthex", "there/below/a.synthex"},
          Row{"a.synthex", "a.synthex"}}) {
        const Project project = TwoClips(mFolder / file);
        corvane::SaveProject(project, mFolder / "here/it.cvproj");
        EXPECT_TRUE(corvane::LoadProject(mFolder / "here/it.cvproj").HoldsSameAs(project)) << file;
        fs::rename(mFolder / "here", mFolder / "there");
        const Project moved = corvane::LoadProject(mFolder / "there/it.cvproj");
        EXPECT_EQ(moved.clips[0]->source.file, mFolder / after);
        EXPECT_EQ(moved.clips[1]->source, project.clips[1]->source);
        fs::rename(mFolder / "there", mFolder / "here");
    }
}

TEST_F(ProjectFiles, ATextCutAnywhereIsRefused) {
    const std::string text = corvane::WriteProject(TwoClips("/x/a.synthex"), {});
    EXPECT_EQ(FailureOf(text), "");
    for (std::size_t length = 0; length + 2 < text.size(); ++length)
        ASSERT_THAT(FailureOf(text.substr(0, length)), HasSubstr("it.cvproj: this project is cut or damaged"))
            << length;
}

TEST_F(ProjectFiles, WhatIsNoProjectOfThisVersionSaysWhy) {
    const std::string head = R"({"format":"corvane-project","version":1,)";
    const std::string sequence = R"("sequence":{"width":1,"height":1,"parNumerator":1,"parDenominator":1,)"
                                 R"("scale":1,"sampleSize":1},)";
    struct Row {
        std::string text;
        const char* why;
    };
    for (const Row& row :
         {Row{"[]", "no project"}, Row{"{}", "no project"},
          Row{R"({"format":"corvane-project"})", "\"version\" is missing"},
          Row{R"({"format":"corvane-project","version":2})", "update Synthex"},
          Row{R"({"format":"corvane-project","version":18446744073709551615})", "update Synthex"},
          Row{R"({"format":"corvane-project","version":0})", "\"version\""},
          Row{head + R"("clips":[]})", "\"sequence\" is missing"},
          Row{head + R"("sequence":{"width":-1},"clips":[]})", "\"width\""},
          Row{head + R"("sequence":{"width":4294967296},"clips":[]})", "\"width\""},
          Row{head + sequence + R"("clips":{}})", "no list"},
          Row{head + sequence + R"("clips":[7]})", "no object"},
          Row{head + sequence + R"("clips":[{"name":"x"}]})", "\"settings\" is missing"},
          Row{head + sequence + R"("clips":[{"name":1,"file":"x"}]})", "\"name\" is no text"},
          Row{head + sequence + R"("clips":[{"name":"x","file":""}]})", "\"file\" is empty"},
          Row{std::string(200000, '['), "cut or damaged"}})
        EXPECT_THAT(FailureOf(row.text), testing::AllOf(HasSubstr("it.cvproj: "), HasSubstr(row.why)))
            << row.text.substr(0, 200);
    EXPECT_EQ(FailureOf(head + sequence + R"("clips":[],"later":{}})"), "");
}

TEST_F(ProjectFiles, WhatIsNoFileOfTextSaysWhy) {
    EXPECT_THROW(corvane::LoadProject(mFolder), corvane::Failure);
    EXPECT_THROW(corvane::LoadProject(mFolder / "none"), corvane::Failure);
    EXPECT_THROW(corvane::LoadProject("/dev/zero"), corvane::Failure);
    EXPECT_THROW(corvane::SaveProject({}, mFolder / "none/it.cvproj"), corvane::Failure);
    Project project;
    project.Add("\xff", {});
    corvane::SaveProject({}, mFolder / "it.cvproj");
    EXPECT_THROW(corvane::SaveProject(project, mFolder / "it.cvproj"), corvane::Failure);
    EXPECT_TRUE(corvane::LoadProject(mFolder / "it.cvproj").clips.empty());
}

TEST(Project, AChangeLeavesCopiesAlone) {
    Project project = TwoClips("/a");
    const Project before = project;
    const std::uint64_t first = project.clips[0]->id, second = project.clips[1]->id;
    project.Rename(second, project.FreeName("own"));
    project.SetSource(first, {.file = {}, .settings = "{}"});
    EXPECT_EQ(project.clips[1]->name, "own 2");
    EXPECT_EQ(before.clips[1]->name, "own");
    EXPECT_TRUE(before.clips[0]->source.IsFile());
    EXPECT_FALSE(project.HoldsSameAs(before));
    project.Remove(first);
    EXPECT_NE(project.Add("new", {}, 0), first) << "an undone change would find another clip under its id";
    EXPECT_EQ(project.clips[1]->id, second);
}

} // namespace
