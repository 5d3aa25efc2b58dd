#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "Bundle.h"
#include "CvPluginAPI.h"
#include "Services/Foundation/Bundles.h"

namespace corvane {

/// A bundle's executable in memory, and its entry point. Nothing has been asked of the plug-in yet: `Bundle`
/// does that. One thread at a time.
class PluginLibrary {
  public:
    /// Loads `bundle` and makes it known to the process. Throws `Failure` if it is no bundle or does not
    /// load.
    explicit PluginLibrary(const std::filesystem::path& bundle);
    /// Unloads the executable.
    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    /// The executable's path.
    const std::filesystem::path& Executable() const { return mExecutable; }
    /// Whether the entry point is exported.
    bool HasEntry() const { return mEntry != nullptr; }

    /// Sends a selector and collects what the plug-in tells the person meanwhile. Never fails, but needs an
    /// entry point.
    Answer Call(std::int32_t selector, void* param1, void* param2) const;

    /// Whether the executable at that path is still in memory. Any thread.
    static bool IsLoaded(const std::filesystem::path& executable);
    /// Whether libraries leave memory when they are unloaded: not in builds whose leak reports need their
    /// symbols.
    static bool Unloads();

  private:
    std::unique_ptr<BundleRegistration> mRegistration;
    std::filesystem::path mExecutable;
    void* mLibrary = nullptr;
    CvImportEntry mEntry = nullptr;
};

} // namespace corvane
