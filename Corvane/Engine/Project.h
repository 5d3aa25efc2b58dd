#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Clip.h"
#include "Preferences.h"

namespace corvane {

/// Where a clip's settings are: in a file of their own, or in the project.
struct ClipSource {
    std::filesystem::path file; ///< whole path; empty for a clip that lives in the project
    std::string settings;       ///< of a clip that lives in the project: the text that the plug-in gave

    bool IsFile() const { return !file.empty(); }
    bool operator==(const ClipSource&) const = default;
};

/// Opens a clip from where its settings are. `name` is what messages call a clip that has no file. Throws
/// `Failure`. Any thread.
std::unique_ptr<Clip> OpenClip(const std::shared_ptr<Bundle>& bundle, const std::string& name,
                               const ClipSource& source);

/// One clip of a project. Never changed once it is in one: a change puts another in its place.
struct ProjectClip {
    std::uint64_t id = 0; ///< no other clip has it while the process lives; not stored
    std::string name;     ///< what the person calls it; UTF-8
    ClipSource source;

    bool operator==(const ProjectClip&) const = default;
};

/// What a project holds. A value: a copy is cheap, since the clips are shared, and undo goes back to one.
/// Nothing here fails. One thread at a time; copies may be on others.
struct Project {
    ClipFormat sequence = kDefaultSequence; ///< whose size, aspect and rate new clips begin with
    std::vector<std::shared_ptr<const ProjectClip>> clips;

    /// The place of a clip; `clips.size()` if there is none of that id.
    std::size_t Find(std::uint64_t id) const;
    /// Adds a clip at the end, or before `place`, and returns its id.
    std::uint64_t Add(std::string name, ClipSource source, std::size_t place = SIZE_MAX);
    /// Gives a clip another name. As with the two below, nothing happens if there is no such clip.
    void Rename(std::uint64_t id, std::string name);
    /// Says that a clip's settings are somewhere else.
    void SetSource(std::uint64_t id, ClipSource source);
    /// Takes a clip out.
    void Remove(std::uint64_t id);
    /// `name` if no clip has it; otherwise with the first number from 2 after it that no clip has.
    std::string FreeName(const std::string& name) const;

    /// Whether both hold the same, whatever the ids.
    bool HoldsSameAs(const Project& other) const;
};

} // namespace corvane
