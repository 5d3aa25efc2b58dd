#include "TaskSizes.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <string>

#include "Engine/Failure.h"
#include "MemberExport.h"

namespace corvane {
namespace {

constexpr std::size_t kMostTasks = 1000; // that Slurm takes if it is not told otherwise
constexpr std::int64_t kTriedFrames = 8;
constexpr double kUsualSeconds = 5e-9; // a pixel, if it can't be tried

double PixelsOf(const Member& member) {
    const Size size = member.spec.settings.size;
    return static_cast<double>(size.width) * size.height;
}

// Seconds that a pixel takes.
double TryMember(const Family& family, const Member& member, const std::shared_ptr<Bundle>& bundle) {
    using std::chrono::steady_clock;
    try {
        const auto clip = Clip::OpenPrefs(bundle, "clip", WriteSettings(member.spec.settings));
        ExportOptions options = ExportOf(family, member);
        options.format = KindOf(member);
        options.output = "/dev/null";
        options.jobs = 1;
        // A single picture can be nowhere, and not a series.
        const std::int64_t frames = options.format == "png" ? 1 : std::min(member.Frames(), kTriedFrames);
        options.frames = {0, frames - 1};
        const std::atomic<bool> goOn{false};
        const steady_clock::time_point start = steady_clock::now();
        ExportClip(*clip, options, {}, goOn);
        const std::chrono::duration<double> taken = steady_clock::now() - start;
        return taken.count() / (PixelsOf(member) * static_cast<double>(frames));
    } catch (const Failure&) {
        return kUsualSeconds; // the task will say what is wrong
    }
}

} // namespace

std::vector<TaskRange> DivideIntoTasks(const Family& family, const std::vector<std::int64_t>& members,
                                       const std::shared_ptr<Bundle>& bundle, double seconds) {
    std::map<std::string, double> known; // by codec and container
    std::vector<double> costs;
    double all = 0;
    for (const std::int64_t number : members) {
        const Member member = family.At(number);
        const auto [found, isNew] = known.try_emplace(member.spec.codec + '/' + KindOf(member), 0);
        if (isNew) found->second = TryMember(family, member, bundle);
        costs.push_back(found->second * PixelsOf(member) * static_cast<double>(member.Frames()));
        all += costs.back();
    }
    seconds = std::max(seconds, all / static_cast<double>(kMostTasks));
    std::vector<TaskRange> tasks;
    double inTask = seconds;
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (inTask >= seconds && tasks.size() < kMostTasks) {
            tasks.emplace_back(members[i], members[i]);
            inTask = 0;
        }
        tasks.back().second = members[i];
        inTask += costs[i];
    }
    // What is left over is no task of its own.
    if (tasks.size() > 1 && inTask < seconds) {
        const std::int64_t last = tasks.back().second;
        tasks.pop_back();
        tasks.back().second = last;
    }
    return tasks;
}

} // namespace corvane
