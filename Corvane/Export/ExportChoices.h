#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "Export.h"

namespace corvane {

/// What a person sets of H.264. The defaults are those of `ExportClip`.
struct H264Settings {
    int quality = 18; ///< constant rate factor, `kH264BestQuality` to `kH264WorstQuality`
    std::string preset = "medium";
};
inline constexpr int kH264BestQuality = 1; // 0 is lossless, which most players can't show
inline constexpr int kH264WorstQuality = 51;

/// The presets of H.264, quickest first.
std::span<const char* const> H264Presets();

/// How the output's name stands for its frames.
enum class ExportNaming {
    kOneFile,  ///< all frames
    kPicture,  ///< one frame
    kPictures, ///< a file a frame, with the number in the name
};

/// One kind of output that a person can choose. All of it can be asked for by `ExportOptions` as well.
struct ExportChoice {
    const char* id;     ///< for settings; never changes
    const char* label;  ///< "MP4, H.264"
    const char* about;  ///< what it is good for, in a sentence
    const char* format; ///< as in `ExportOptions`, and the suffix of the name
    const char* codec;
    const char* codecWithAlpha; ///< tried first; null where there is none
    bool native;
    ExportNaming naming;

    bool IsH264() const;
    /// Options for the clip, without output and frames. Opens the encoder where a choice has a codec for
    /// alpha.
    ExportOptions OptionsFor(const Clip& clip, const H264Settings& h264 = {}) const;
    /// Why the clip can't be exported so, as a sentence; empty where it can. Some milliseconds.
    std::string WhyNot(const Clip& clip) const;
    /// Puts other settings into options that `OptionsFor` gave. Only where `IsH264`.
    static void SetH264(ExportOptions& options, const H264Settings& h264);
};

/// All choices; the first is the one for everybody.
std::span<const ExportChoice> ExportChoices();
/// The choice of this id; null where there is none.
const ExportChoice* FindExportChoice(std::string_view id);

/// A name without folder for an export of a clip of this name: without what no file name can hold, and with
/// the choice's suffix.
std::string ProposedFileName(const std::string& clipName, const ExportChoice& choice);

/// The path as the choice needs it: with its suffix, and with a number for pictures. Throws `UsageFailure`
/// for a name with two numbers or another percent sign.
std::filesystem::path CompletedPath(const std::filesystem::path& path, const ExportChoice& choice);

/// The first file that an export would replace; for pictures the one with the lowest number. `frames` is the
/// range, both included. Takes time with the folder's files.
std::optional<std::filesystem::path> FindReplaced(const std::filesystem::path& output,
                                                  const ExportChoice& choice,
                                                  std::pair<std::int64_t, std::int64_t> frames);

} // namespace corvane
