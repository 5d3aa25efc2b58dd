#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "Bundle.h"
#include "ClipFormat.h"
#include "Failure.h"
#include "Frame.h"

namespace corvane {

/// What a clip is, as the plug-in told it. A value for any thread.
struct ClipInfo {
    ClipFormat format;

    // More of the info record.
    std::uint8_t fieldType = 0; ///< which `format.order` was made from
    std::uint16_t depth = 0;    ///< bits a pixel
    std::uint32_t duration = 0; ///< frames times sample size, low 32 bits

    // From the settings text that the plug-in gave.
    CvPixelFormat pixelFormat = 0;  ///< the format asked for; it may be unknown to the host
    std::int64_t ticksPerFrame = 0; ///< exact, unlike `format.rate`; not above 0 if the clip has no rate
    std::int64_t durationTicks = 0;
    std::int64_t frames = 0; ///< whole frames; 0 if the rate or the duration is not above 0
};

/// The format in which the plug-in delivers frames of `format`; empty if it can't make any. Any thread.
std::optional<CvPixelFormat> DeliveredFormat(const std::shared_ptr<Bundle>& bundle, CvPixelFormat format);

/// An open clip. Owns the plug-in's instance. May be opened and closed on any thread, and `GetFrame` may be
/// called from many threads at once.
class Clip {
  public:
    /// Opens a settings file. Throws `Failure` with the file's name and the reason. Any thread.
    static std::unique_ptr<Clip> OpenFile(std::shared_ptr<Bundle> bundle, const std::filesystem::path& path);
    /// Opens a clip that lives in a project: `prefs` is the settings text, `name` what to call it in
    /// messages. Throws `Failure` with the name and the reason. Any thread.
    static std::unique_ptr<Clip> OpenPrefs(std::shared_ptr<Bundle> bundle, std::string name,
                                           std::string prefs);

    ~Clip();
    Clip(const Clip&) = delete;
    Clip& operator=(const Clip&) = delete;

    /// What to call the clip in messages: its path as given, or its name.
    const std::string& Name() const { return mName; }
    const ClipInfo& Info() const { return mInfo; }
    /// The settings text as the plug-in writes it.
    const std::string& Settings() const { return mPrefs; }
    /// The plug-in that makes its frames.
    const std::shared_ptr<Bundle>& MadeBy() const { return mBundle; }

    /// Frame `index`, counted from 0: its time is index times ticks per frame, exactly. Throws `Failure` if
    /// the index is outside the clip, and with the reason if the plug-in can't make the frame. Any number of
    /// threads at once.
    Frame GetFrame(std::int64_t index) const;

    /// Says, as a clause, why no frame can be rendered (no rate, no duration, an impossible size or format);
    /// empty if they can. Any thread.
    std::string WhyNotRenderable() const;

    /// Says, as a clause, why there is no frame of that index: it is outside the clip, or beyond what the
    /// plug-in's 32-bit frame numbers can tell; empty if there is one. Any thread.
    std::string WhyNoFrameAt(std::int64_t index) const;

  private:
    Clip(std::shared_ptr<Bundle> bundle, std::string name);
    void OpenInstance(const std::filesystem::path& path);
    void AskForSettings();
    void AskForInfo();
    void ReadTiming();
    [[noreturn]] void Fail(const std::string& reason) const;

    std::shared_ptr<Bundle> mBundle;
    std::string mName;
    std::u16string mPath; // empty for a clip of a project
    std::string mPrefs;
    void* mInstance = nullptr;
    ClipInfo mInfo;
};

} // namespace corvane
