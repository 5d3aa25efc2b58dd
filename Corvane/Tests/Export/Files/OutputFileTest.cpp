// Faults sought: an error that kills, or names neither file nor remedy. How files are replaced is told by
// AtomicFile.
#include "Export/Files/OutputFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Export/Picture/TestFrames.h"

namespace {

namespace fs = std::filesystem;
using corvane::OutputFile;
using corvane::testing::TestFolder;

std::span<const std::byte> Bytes(std::string_view text) {
    return std::as_bytes(std::span(text));
}

/// Writing those bytes to that file fails with a sentence that begins with its name and goes on so.
void ExpectFailure(const fs::path& path, std::size_t bytes, const char* sentence) {
    EXPECT_THAT(
        [&] {
            OutputFile file(path);
            for (; bytes > 0; bytes -= 100) file.Write(Bytes(std::string(100, 'x')));
            file.Commit();
        },
        testing::ThrowsMessage<corvane::Failure>(
            testing::AllOf(testing::StartsWith(path.string()), testing::HasSubstr(sentence))));
}

TEST(OutputFile, NamesTheFileAndTheRemedy) {
    TestFolder folder;
    fs::permissions(folder.Write("file", "x"), fs::perms(0444));
    ExpectFailure(folder.Path(), 0, "name a file");
    ExpectFailure(folder / "no/such/out.y4m", 0, "does not exist; make it first");
    ExpectFailure(folder / "file/out.y4m", 0, "is no folder");
    ExpectFailure("/dev/full", 100, "disk is full; free some space");
    {
        const corvane::testing::FullDisk full(4096);
        const corvane::WriteSignalGuard guard;
        ExpectFailure(folder / "out", 9000, "size limit");
    }
    {
        const corvane::testing::AsNobody nobody;
        ExpectFailure(folder / "file", 0, "; ");
        ExpectFailure(folder / "new", 0, "; ");
    }
    EXPECT_THAT(folder.Names(), testing::ElementsAre("file"));
}

} // namespace
