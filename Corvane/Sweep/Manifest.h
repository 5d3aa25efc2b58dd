#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "Export/Export.h"
#include "Family.h"
#include "Services/Foundation/FileDescriptor.h"

namespace corvane {

/// What the manifest is called in a family's folder.
inline constexpr char kManifestName[] = "manifest.json";
/// The folder beside it that holds what is not gathered yet.
inline constexpr char kEntriesName[] = ".synthex-sweep";

/// The manifest that a person means by its path or by its folder's. Any thread.
std::filesystem::path ManifestFile(const std::filesystem::path& path);

/// What has been made of a family: a file of its own for each member that is made, and now and then all of
/// them in the manifest. An entry is the line that the member has in the manifest.
///
/// An entry is written before the output gets its name, and kept after that: an output that has its name has
/// an entry, however the process ends. Any thread, unless said otherwise; everything throws `Failure`.
class Manifest {
  public:
    /// Reads where the members of an older manifest are, makes the folders, and locks the family: for this
    /// process alone if it is to be gathered, and otherwise beside others of that kind. Throws `Failure` if
    /// another process is at work there, if the older manifest is of a newer version or none, and if the
    /// folder may not be written to. One thread.
    Manifest(const Family& family, bool gathers);
    ~Manifest();
    Manifest(const Manifest&) = delete;
    Manifest& operator=(const Manifest&) = delete;

    /// Whether the member is made, by these settings and options, and its output is there. If so, its
    /// settings file is, too, afterwards. One thread.
    bool IsMade(const Member& member);
    /// Writes the settings file of a member and the folders of its files. One thread.
    void Prepare(const Member& member);
    /// Writes what became of a member, whose output is at `working` and has not got its name yet.
    void Announce(const Member& member, const Clip& clip, const ExportReport& report,
                  const std::vector<std::filesystem::path>& working) const;
    /// Keeps what was announced: the output has its name now.
    void Keep(const Member& member);

    /// Writes the manifest of all members that are made. One thread, as for the one below.
    void Gather() const;
    /// Removes the entries, which the manifest must hold.
    void RemoveEntries();

  private:
    struct Place {
        std::int64_t offset = 0;
        std::int64_t size = 0;
    };

    void Lock();
    void ReadOlder();
    std::filesystem::path EntryOf(const Member& member, const char* suffix) const;
    std::optional<std::string> LineOf(const Member& member) const;

    const Family& mFamily;
    const bool mGathers;
    const std::filesystem::path mEntries;
    FileDescriptor mLock;
    FileDescriptor mOlder;                         // the manifest that was there
    std::unordered_map<std::string, Place> mLines; // in it, by output
    std::vector<char> mMade; // of each member; chars, so that threads may write beside each other
};

} // namespace corvane
