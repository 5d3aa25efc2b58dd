#pragma once

#include <filesystem>
#include <string>

#include "Platform.h"

/// A bundle the process knows: its identifier and its folder.
struct CFBundle {
    std::string identifier;
    std::filesystem::path folder; ///< absolute path of NAME.bundle
};

namespace corvane {

/// Makes a bundle known to `CFBundleGetBundleWithIdentifier` while this object lives; done by whoever loads
/// it. Of two with one identifier the later is found. Any thread.
class BundleRegistration {
  public:
    /// Reads `folder`/Contents/Info.plist. Throws `std::runtime_error` if it is missing or damaged, or names
    /// no identifier or no executable.
    explicit BundleRegistration(const std::filesystem::path& folder);
    ~BundleRegistration();
    BundleRegistration(const BundleRegistration&) = delete;
    BundleRegistration& operator=(const BundleRegistration&) = delete;

    /// The bundle's identifier.
    const std::string& Identifier() const { return mBundle->identifier; }
    /// The name of the executable in `Contents/Linux`.
    const std::string& Executable() const { return mExecutable; }

  private:
    // Kept for the life of the process: a `CFBundleRef` that a plug-in holds stays valid.
    const CFBundle* mBundle;
    std::string mExecutable;
};

} // namespace corvane
