#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "Export.h"
#include "Export/Picture/StreamFacts.h"
#include "Export/Targets/ExportKinds.h"
#include "Export/Targets/Target.h"

namespace corvane {

/// A destination that takes everything, for targets that are only asked something.
inline constexpr const char* kNowhere = "/dev/null";

/// Frames of a clip, both included.
struct FrameRange {
    std::int64_t first = 0;
    std::int64_t last = 0;

    std::int64_t Count() const { return last - first + 1; }
};

/// What the options of an export mean. Any thread. All of it throws `UsageFailure` for options that can't be.
class ExportSetup {
  public:
    /// `options` outlive it.
    explicit ExportSetup(const ExportOptions& options);
    ExportSetup(const ExportSetup&) = delete;
    ExportSetup& operator=(const ExportSetup&) = delete;

    /// The kind of output; its name is valid as long as the setup.
    const ExportKind& Kind() const { return mKind; }
    /// Whether the output is one file a frame.
    bool IsSeries() const { return mSeries; }
    /// Which frames are to be exported. Throws `UsageFailure` if the clip does not have them or the output
    /// can't hold them all.
    FrameRange FramesOf(const Clip& clip) const;
    /// Makes the target for pictures of that kind, at the destination of the options or at `output`. Throws
    /// `Failure` if that can't be.
    std::unique_ptr<Target> MakeTarget(const StreamFacts& facts) const;
    std::unique_ptr<Target> MakeTarget(const StreamFacts& facts, const std::filesystem::path& output) const;

  private:
    const ExportOptions& mOptions;
    const std::string mName;
    const ExportKind mKind;
    const bool mSeries;
};

/// Throws `Failure` if the clip can't be rendered. Any thread.
void CheckRenderable(const Clip& clip);

/// Whether the clip is not opaque and `target` has no place for its alpha. Any thread.
bool LosesAlpha(const Clip& clip, const StreamFacts& facts, const Target& target);

/// Completes an output whose frames are all in it, gives it its name, and fills in the rest of `report`.
/// Throws `Failure`.
void CompleteExport(const Clip& clip, const ExportOptions& options, const StreamFacts& facts, Target& target,
                    ExportReport& report);

} // namespace corvane
