#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Axes.h"
#include "OutputName.h"
#include "Plan.h"

namespace corvane {

/// One clip of a family, and what is made of it. A value.
struct Member {
    std::int64_t number = 0; ///< from 0
    MemberSpec spec;
    std::vector<std::string> words;     ///< of each axis of the plan
    std::filesystem::path output;       ///< from the family's folder
    std::filesystem::path settingsFile; ///< the same; members with the same settings share it

    /// Whole frames to export; 0 if the clip has no rate or no duration.
    std::int64_t Frames() const;
};

/// The members of a plan. Each is made when it is asked for. Never changes; any thread.
class Family {
  public:
    /// `base` are the settings of the plan's base clip. Throws `UsageFailure`, which lists what there is or
    /// names the remedy, for an axis or a value that is none or comes twice, for too many members, and if two
    /// of them would have the same name. Takes time in proportion to the members.
    Family(const Plan& plan, const ClipSettings& base);

    std::int64_t Count() const { return mCount; }
    /// The member of a number from 0. Throws `UsageFailure` if nothing tells its container.
    Member At(std::int64_t number) const;
    /// The folder in which all of it lies.
    const std::filesystem::path& Folder() const { return mName.Folder(); }
    /// The axes of the plan, in its order.
    const std::vector<const AxisRow*>& Axes() const { return mRows; }

  private:
    void TakeAxes();
    void CountMembers();
    void CheckPlaceholders() const;
    void CheckNames() const;
    std::size_t ValueOf(std::size_t axis, std::int64_t number) const;

    const Plan mPlan;
    MemberSpec mBase;
    const OutputName mName;
    std::vector<const AxisRow*> mRows; // of each axis of the plan
    std::vector<std::size_t> mOrder;   // in which they are applied
    std::int64_t mCount = 1;
};

} // namespace corvane
