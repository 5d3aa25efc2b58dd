#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "CvPluginAPI.h"

namespace corvane {

class PluginLibrary;

/// The answer to one call of the entry point, with what the plug-in told the person during it.
struct Answer {
    std::int32_t result = 0;
    /// The alert's text as the plug-in built it; empty if there was none.
    std::string alert;

    /// The part of the alert that says why: the exception's own text, or the whole alert. Any thread.
    std::string Reason() const;
};

/// A loaded importer bundle. Loading sends selector 0; destruction sends selector 1 and unloads. Shared by
/// the clips that come from it, which must not outlive it.
class Bundle {
  public:
    /// Where the bundle is: `named` if not empty, else the environment's SYNTHEX_BUNDLE, else the one beside
    /// the library of the host services (`InLibraryFolder`). It need not exist. Any thread while nobody
    /// changes the environment.
    static std::filesystem::path Find(const std::filesystem::path& named = {});

    /// The bundle at `Find(named)`, loaded: the same object as long as somebody has it. Throws as the
    /// constructor does. Any thread.
    static std::shared_ptr<Bundle> Shared(const std::filesystem::path& named = {});

    /// Loads the bundle and initializes it. Throws `Failure` if it is no bundle, does not load, has no entry
    /// point, or does not answer `kResult_Initialized`. Any thread.
    explicit Bundle(const std::filesystem::path& path);
    ~Bundle();
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

    const std::filesystem::path& Path() const { return mPath; }

    /// Sends a selector other than 47. Never fails: the answer says what went wrong. Any thread: a call waits
    /// until no other thread is in one, since the plug-in knows no locks. A dialog that is open is such a
    /// call, and its own thread may make further ones.
    Answer Call(std::int32_t selector, void* param1, void* param2) const;

    /// Asks for a frame (selector 47). Never fails, as above. Any number of threads at once.
    Answer CallForFrame(imSourceVideoRec& record) const;

  private:
    std::filesystem::path mPath;
    std::unique_ptr<PluginLibrary> mLibrary;
    mutable std::recursive_mutex mCalling;
    // The plug-in gets its suites when it makes its first frame: no other thread may ask for one meanwhile.
    mutable std::mutex mFirstFrame;
    mutable std::atomic<bool> mHadFrame{false};
};

} // namespace corvane
