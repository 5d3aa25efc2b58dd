#include "Check.h"

#include <algorithm>
#include <set>
#include <system_error>

#include <fmt/format.h>

#include "Engine/ClipText.h"
#include "Engine/TextFile.h"
#include "Entry.h"
#include "Manifest.h"
#include "Services/Foundation/FileError.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

// Says what is wrong with the settings file; nothing if it is as it was.
std::string WhatOfSettings(const fs::path& file, const ClipSettings& settings) {
    std::error_code error;
    if (!fs::exists(file, error)) return "is missing";
    try {
        return ReadSettings(ReadTextFile(file)) == settings ? "" : "has other settings";
    } catch (const Failure& failure) {
        return failure.what();
    }
}

std::string WhatOfOutput(const std::vector<fs::path>& files, const MadeMember& made) {
    std::uint64_t bytes = 0;
    for (const fs::path& file : files) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(file, error);
        if (error) return fmt::format("is missing ({})", error.message());
        bytes += size;
    }
    if (bytes != made.bytes) return fmt::format("has {} bytes instead of {}", bytes, made.bytes);
    try {
        return HashText(HashFiles(files).hash) == made.hash ? "" : "has other bytes";
    } catch (const FileError& error) {
        return fmt::format("can't be read ({})", error.what());
    }
}

class Checker {
  public:
    explicit Checker(const fs::path& manifest) : mManifest(manifest), mFolder(manifest.parent_path()) {
        if (mFolder.empty()) mFolder = ".";
        mKnown.insert(manifest.filename().string());
        mFolders.insert(".");
    }

    void Look(const std::string& line, CheckReport& report) {
        const auto made = ReadEntry(line);
        if (!made) {
            report.problems.push_back(fmt::format("{}: a line in it is damaged", mManifest.string()));
            return;
        }
        const auto tell = [&](const std::string& file, const std::string& what) {
            if (!what.empty())
                report.problems.push_back(fmt::format("{}: {}", (mFolder / file).string(), what));
        };
        if (mKnown.insert(made->settingsFile).second)
            tell(made->settingsFile, WhatOfSettings(mFolder / made->settingsFile, made->settings));
        std::vector<fs::path> files;
        for (const fs::path& file : made->files) {
            files.push_back(mFolder / file);
            mKnown.insert(file.lexically_normal().string());
            mFolders.insert(file.has_parent_path() ? file.parent_path().lexically_normal().string() : ".");
        }
        tell(made->output, WhatOfOutput(files, *made));
    }

    std::vector<std::string> Others() const {
        std::vector<std::string> others;
        for (const std::string& folder : mFolders) {
            std::error_code error;
            for (const auto& entry : fs::directory_iterator(mFolder / folder, error)) {
                const std::string name =
                    (fs::path(folder) / entry.path().filename()).lexically_normal().string();
                const bool hidden = entry.path().filename().string().starts_with('.');
                if (!hidden && entry.is_regular_file(error) && !mKnown.contains(name))
                    others.push_back((mFolder / name).string());
            }
        }
        std::ranges::sort(others);
        return others;
    }

  private:
    const fs::path mManifest;
    fs::path mFolder;
    std::set<std::string> mKnown;   // files, from the folder
    std::set<std::string> mFolders; // in which they are
};

} // namespace

CheckReport CheckManifest(const fs::path& manifest,
                          const std::function<void(std::int64_t done, std::int64_t total)>& progress,
                          const std::atomic<bool>& cancel) {
    const fs::path file = ManifestFile(manifest);
    std::int64_t total = 0;
    CheckReport report;
    report.expected = ReadManifest(file, [&](std::string&&, std::int64_t) { ++total; });
    Checker checker(file);
    ReadManifest(file, [&](std::string&& line, std::int64_t) {
        if (cancel) return;
        checker.Look(line, report);
        if (progress) progress(++report.members, total);
    });
    report.cancelled = cancel;
    if (report.members < report.expected)
        report.problems.push_back(
            fmt::format("{}: it has {} of {} members; run the sweep again to make the rest", file.string(),
                        report.members, report.expected));
    report.others = checker.Others();
    return report;
}

} // namespace corvane
