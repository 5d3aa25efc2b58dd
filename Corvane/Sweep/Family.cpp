#include "Family.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <numeric>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "Engine/Failure.h"

namespace corvane {
namespace {

constexpr std::int64_t kMostMembers = 1000000;

std::string NameOf(const std::filesystem::path& base) {
    return base.stem().string();
}

// "{rate}, {size}"
std::string Placeholders(const std::vector<const AxisRow*>& axes) {
    std::string text;
    for (const AxisRow* const axis : axes)
        text += fmt::format("{}{{{}}}", text.empty() ? "" : ", ", axis->name);
    return text;
}

void Read(const AxisRow& row, const std::string& value, MemberSpec& spec) {
    if (const std::string why = row.read(value, spec); !why.empty())
        throw UsageFailure(fmt::format("{} '{}' is not understood; {}", row.name, value, why));
}

} // namespace

std::int64_t Member::Frames() const {
    if (spec.part) return spec.part->second - spec.part->first + 1;
    const ClipSettings& settings = spec.settings;
    return settings.ticksPerFrame > 0 && settings.durationTicks > 0
               ? settings.durationTicks / settings.ticksPerFrame
               : 0;
}

Family::Family(const Plan& plan, const ClipSettings& base)
    : mPlan(plan), mBase{NameOf(plan.base), base, {}, {}}, mName(plan.output) {
    TakeAxes();
    CountMembers();
    CheckPlaceholders();
    CheckNames();
}

void Family::TakeAxes() {
    for (const Plan::Axis& axis : mPlan.axes) {
        const AxisRow* const row = FindAxis(axis.name);
        if (row == nullptr)
            throw UsageFailure(
                fmt::format("there is no axis '{}'; choose some of {}", axis.name, ListAxes()));
        if (std::ranges::find(mRows, row) != mRows.end())
            throw UsageFailure(
                fmt::format("the axis {} is there twice; give all of its values once", axis.name));
        if (axis.values.empty())
            throw UsageFailure(
                fmt::format("the axis {} has no values; give some, such as {}=A,B", axis.name, axis.name));
        std::set<std::string> words;
        for (const std::string& value : axis.values) {
            MemberSpec spec = mBase;
            Read(*row, value, spec);
            if (!words.insert(row->write(spec)).second)
                throw UsageFailure(
                    fmt::format("{} has the value '{}' twice; leave one out", axis.name, value));
        }
        mRows.push_back(row);
    }
    const auto has = [this](const char* name) {
        return std::ranges::find(mRows, FindAxis(name)) != mRows.end();
    };
    if (has("duration") && has("frames"))
        throw UsageFailure("duration and frames both tell the length; vary one of them");
    mOrder.resize(mRows.size());
    std::iota(mOrder.begin(), mOrder.end(), std::size_t{0});
    // Frames take the rate that another axis gives.
    std::ranges::sort(mOrder, {}, [this](std::size_t axis) { return mRows[axis]; });
}

void Family::CountMembers() {
    for (const Plan::Axis& axis : mPlan.axes) {
        const std::int64_t values = std::ssize(axis.values);
        const Plan::Axis& first = mPlan.axes.front();
        if (mPlan.zip && axis.values.size() != first.values.size())
            throw UsageFailure(
                fmt::format("{} has {} values and {} has {}; axes that go together have equally many",
                            first.name, first.values.size(), axis.name, values));
        mCount = mPlan.zip ? values : mCount * values;
        if (mCount > kMostMembers)
            throw UsageFailure(
                fmt::format("the family would have more than {} members; vary less of it", kMostMembers));
    }
}

// Without enumerating members, and tells all that is missing at once.
void Family::CheckPlaceholders() const {
    std::vector<const AxisRow*> missing;
    for (std::size_t i = 0; i < mRows.size(); ++i)
        if (mPlan.axes[i].values.size() > 1 && !mName.Has(*mRows[i])) missing.push_back(mRows[i]);
    if (!mPlan.zip && !missing.empty())
        throw UsageFailure(fmt::format("{}: members share names, because {} is not in it; write {}",
                                       mPlan.output.string(), Placeholders(missing), mName.With(missing)));
}

void Family::CheckNames() const {
    using Hashed = std::pair<std::size_t, std::int64_t>; // of a name, and the member that has it
    std::vector<Hashed> outputs, settings;
    for (std::int64_t number = 0; number < mCount; ++number) {
        const Member member = At(number);
        outputs.emplace_back(std::hash<std::string>()(member.output.string()), number);
        settings.emplace_back(std::hash<std::string>()(member.settingsFile.string()), number);
    }
    const auto check = [this](std::vector<Hashed>& names, auto pathOf, auto mayShare) {
        std::ranges::sort(names);
        for (std::size_t i = 1; i < names.size(); ++i) {
            if (names[i - 1].first != names[i].first) continue;
            const Member one = At(names[i - 1].second), other = At(names[i].second);
            if (pathOf(one) != pathOf(other) || mayShare(one, other)) continue;
            std::vector<const AxisRow*> missing;
            for (std::size_t axis = 0; axis < mRows.size(); ++axis)
                if (one.words[axis] != other.words[axis] && !mName.Has(*mRows[axis]))
                    missing.push_back(mRows[axis]);
            throw UsageFailure(
                fmt::format("{}: members {} and {} would both be {}; {}", mPlan.output.string(), one.number,
                            other.number, pathOf(one).string(),
                            missing.empty() ? "put something between the placeholders, or choose other "
                                              "values"
                                            : "write " + mName.With(missing)));
        }
    };
    check(
        outputs, [](const Member& m) { return m.output; },
        [](const Member&, const Member&) { return false; });
    check(
        settings, [](const Member& m) { return m.settingsFile; },
        [](const Member& a, const Member& b) { return a.spec.settings == b.spec.settings; });
}

std::size_t Family::ValueOf(std::size_t axis, std::int64_t number) const {
    if (mPlan.zip) return static_cast<std::size_t>(number);
    auto rest = static_cast<std::size_t>(number);
    for (std::size_t i = mRows.size() - 1; i > axis; --i) rest /= mPlan.axes[i].values.size();
    return rest % mPlan.axes[axis].values.size();
}

Member Family::At(std::int64_t number) const {
    Member member{.number = number, .spec = mBase, .words = {}, .output = {}, .settingsFile = {}};
    for (const std::size_t axis : mOrder)
        Read(*mRows[axis], mPlan.axes[axis].values[ValueOf(axis, number)], member.spec);
    std::string name = SafeName(member.spec.name);
    for (std::size_t i = 0; i < mRows.size(); ++i) {
        member.words.push_back(mRows[i]->write(member.spec));
        if (mRows[i]->ofClip && mPlan.axes[i].values.size() > 1) name += '-' + SafeName(member.words.back());
    }
    member.output = mName.For(member.spec);
    member.settingsFile = name + ".synthex";
    return member;
}

} // namespace corvane
