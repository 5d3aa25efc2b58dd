#include "Project.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <fmt/format.h>

namespace corvane {

namespace {

std::uint64_t NewID() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// Puts in the place of a clip what `change` makes of a copy of it.
template <class Change>
void Replace(Project& project, std::uint64_t id, const Change& change) {
    const std::size_t place = project.Find(id);
    if (place == project.clips.size()) return;
    auto changed = std::make_shared<ProjectClip>(*project.clips[place]);
    change(*changed);
    project.clips[place] = std::move(changed);
}

} // namespace

std::unique_ptr<Clip> OpenClip(const std::shared_ptr<Bundle>& bundle, const std::string& name,
                               const ClipSource& source) {
    return source.IsFile() ? Clip::OpenFile(bundle, source.file)
                           : Clip::OpenPrefs(bundle, name, source.settings);
}

std::size_t Project::Find(std::uint64_t id) const {
    const auto found = std::ranges::find_if(clips, [id](const auto& clip) { return clip->id == id; });
    return static_cast<std::size_t>(found - clips.begin());
}

std::uint64_t Project::Add(std::string name, ClipSource source, std::size_t place) {
    const std::uint64_t id = NewID();
    clips.insert(clips.begin() + static_cast<std::ptrdiff_t>(std::min(place, clips.size())),
                 std::make_shared<ProjectClip>(ProjectClip{id, std::move(name), std::move(source)}));
    return id;
}

void Project::Rename(std::uint64_t id, std::string name) {
    Replace(*this, id, [&](ProjectClip& clip) { clip.name = std::move(name); });
}

void Project::SetSource(std::uint64_t id, ClipSource source) {
    Replace(*this, id, [&](ProjectClip& clip) { clip.source = std::move(source); });
}

void Project::Remove(std::uint64_t id) {
    std::erase_if(clips, [id](const auto& clip) { return clip->id == id; });
}

std::string Project::FreeName(const std::string& name) const {
    const auto taken = [this](const std::string& wanted) {
        return std::ranges::any_of(clips, [&](const auto& clip) { return clip->name == wanted; });
    };
    std::string candidate = name;
    for (int number = 2; taken(candidate); ++number) candidate = fmt::format("{} {}", name, number);
    return candidate;
}

bool Project::HoldsSameAs(const Project& other) const {
    return sequence == other.sequence &&
           std::ranges::equal(clips, other.clips, [](const auto& a, const auto& b) {
               return a == b || (a->name == b->name && a->source == b->source);
           });
}

} // namespace corvane
