#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <utility>

namespace corvane {

/// One check that is being made: it has the bundle's path, and takes what is found. Not to be shared by
/// threads.
class CheckRun {
  public:
    /// Told what is being asked of the plug-in, before it is asked.
    using OnDoing = std::function<void(const std::string&)>;

    CheckRun(std::filesystem::path bundle, std::uint64_t sequences, OnDoing onDoing)
        : mBundle(std::move(bundle)), mSequences(sequences), mOnDoing(std::move(onDoing)) {}

    /// The bundle to check.
    const std::filesystem::path& BundlePath() const { return mBundle; }
    /// How many random sequences of requests to send.
    std::uint64_t Sequences() const { return mSequences; }

    /// Says what is asked of the plug-in next, as a clause that goes on after "while" ("opening a settings
    /// file"). It is what the person reads if the plug-in hangs or ends the process, and what a failure is
    /// about.
    void Doing(const std::string& what);
    /// Notes a failure: `why` is a clause. Only the first counts; the check may go on.
    void Fail(const std::string& why);
    /// Notes a failure if `why` is not empty.
    void FailIf(const std::string& why);
    /// Notes a failure if `found` is not `wanted`. `what` names the value ("the result").
    template <class T>
    void Expect(const char* what, T found, T wanted) {
        if (found != wanted) Fail(Unexpected(what, std::to_string(found), std::to_string(wanted)));
    }

    /// Why the check failed; empty if it passed.
    const std::string& WhyFailed() const { return mWhyFailed; }

  private:
    static std::string Unexpected(const char* what, const std::string& found, const std::string& wanted);

    std::filesystem::path mBundle;
    std::uint64_t mSequences;
    OnDoing mOnDoing;
    std::string mDoing;
    std::string mWhyFailed;
};

/// How many random sequences of requests are sent unless the person asks for more: what takes less than a
/// second.
inline constexpr std::uint64_t kUsualSequences = 500;

/// A check that a host makes of an importer, through its entry point alone.
struct Check {
    const char* sentence; ///< what holds if the check passes
    /// Makes the check. May throw `Failure`, which counts as a failed check. A faulty plug-in may hang or end
    /// the process: run checks in a process of their own.
    void (*make)(CheckRun& run);
    /// Whether nothing that follows makes sense if this one fails.
    bool essential = false;
};

/// All checks, in the order in which to make them. Each stands alone. Lives as long as the process. Any
/// thread.
std::span<const Check> AllChecks();

} // namespace corvane
