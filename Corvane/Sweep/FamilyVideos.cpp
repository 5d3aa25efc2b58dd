#include "FamilyVideos.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Entry.h"
#include "Manifest.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

// What may lie beside a video under its name.
constexpr const char* kNoVideos[] = {".synthex", ".json", ".html", ".txt", ".log", ".xml", ".md5"};

// The files of a folder that may be videos, by their names without suffix.
class VideoFolder {
  public:
    // `outputs` are those of all members: what is called exactly like one is the video of no other.
    VideoFolder(const fs::path& folder, const std::vector<MadeMember>& members) : mFolder(folder) {
        std::error_code error;
        if (!fs::is_directory(folder, error))
            throw Failure(fmt::format(
                "{}: this is no folder; give the one that holds the videos of the family", folder.string()));
        for (const MadeMember& member : members) {
            mTaken.insert(mFolder / member.output);
            mFolders.insert((mFolder / member.output).parent_path());
        }
        for (const fs::path& path : mFolders)
            for (const auto& entry : fs::directory_iterator(path, error)) Add(entry.path());
    }

    // Empty, and why as a sentence, if there is none or can't be told.
    fs::path Find(const MadeMember& member, std::string& whyNone) const {
        const fs::path exact = mFolder / member.output;
        std::error_code error;
        const auto isThere = [&](const fs::path& file) { return fs::exists(mFolder / file, error); };
        if (std::ranges::any_of(member.files, isThere)) return exact;
        std::set<fs::path> found;
        for (const fs::path& file : FilesLike(exact)) found.insert(file);
        const bool isSeries = member.files.size() != 1 || member.files.front() != member.output;
        if (isSeries && !member.files.empty()) {
            // Numbered pictures of another kind, or one file instead of them.
            for (const fs::path& file : FilesLike(mFolder / member.files.front()))
                found.insert(fs::path(exact).replace_extension(file.extension()));
            const std::string name = exact.filename().string();
            const std::string before = name.substr(0, name.find('%'));
            const std::size_t end = before.find_last_not_of("._-") + 1;
            for (const fs::path& file : FilesLike(exact.parent_path() / (before.substr(0, end) + ".x")))
                found.insert(file);
        }
        if (found.size() == 1) return *found.begin();
        whyNone = found.empty()
                      ? fmt::format("{}: this video is missing", exact.string())
                      : fmt::format("{}: this video is missing, and several may be it ({} and {}); leave "
                                    "one of them there",
                                    exact.string(), found.begin()->filename().string(),
                                    std::next(found.begin())->filename().string());
        return {};
    }

  private:
    using Files = std::multimap<fs::path, fs::path>;

    void Add(const fs::path& file) {
        if (std::ranges::find(kNoVideos, file.extension()) == std::end(kNoVideos) && !mTaken.contains(file))
            mFiles.emplace(fs::path(file).replace_extension(), file);
    }

    // The files that are called like `path` but for the suffix.
    std::vector<fs::path> FilesLike(const fs::path& path) const {
        std::vector<fs::path> files;
        const auto [begin, end] = mFiles.equal_range(fs::path(path).replace_extension());
        for (auto file = begin; file != end; ++file) files.push_back(file->second);
        return files;
    }

    const fs::path mFolder;
    std::set<fs::path> mTaken, mFolders;
    Files mFiles;
};

} // namespace

std::vector<MemberVideo> FindVideos(const fs::path& manifest, const fs::path& folder) {
    const fs::path file = ManifestFile(manifest);
    std::vector<MadeMember> members;
    ReadManifest(file, [&](std::string&& line, std::int64_t) {
        auto made = ReadEntry(line);
        if (!made)
            throw Failure(fmt::format("{}: a line in it is damaged; make the family again, which keeps "
                                      "what is unchanged",
                                      file.string()));
        made->frames = {};
        members.push_back(std::move(*made));
    });
    const VideoFolder videos(folder, members);
    std::vector<MemberVideo> found;
    for (MadeMember& made : members) {
        MemberVideo& member =
            found.emplace_back(MemberVideo{made.output, made.settingsFile, made.settings, made.part, {}, {}});
        member.video = videos.Find(made, member.whyNone);
    }
    return found;
}

} // namespace corvane
