#pragma once

#include <span>
#include <string>
#include <string_view>

namespace corvane {

// What can be exported: one row a kind of file and one row a codec, in `ExportKinds.cpp`. The command line,
// the window and the module that knows libav all read these rows, and so do the texts that list them. Every
// function here is for any thread and fails only for want of memory; what they return lives as long as the
// program.

/// Who writes the files of a kind.
enum class ExportWriter { kPng, kRaw, kY4m, kLibav, kLibavPicture };

/// What a file name stands for.
enum class ExportNaming {
    kOneFile,  ///< all frames in one file
    kPicture,  ///< one frame
    kPictures, ///< one file a frame, with the frame's number in the name
};

/// One way to export that a person can choose in the window. `ExportOptions` can ask for the same.
struct ExportChoice {
    const char* id;         ///< for settings; never changes
    const char* label;      ///< "MP4, H.264"
    const char* about;      ///< what it is good for, in a sentence
    const char* kind;       ///< the name of an `ExportKind`
    const char* codec = ""; ///< as in `ExportOptions`
    ExportNaming naming = ExportNaming::kOneFile;
    bool native = false; ///< as in `ExportOptions`

    /// Whether `H264Settings` apply.
    bool IsH264() const { return std::string_view(codec) == "h264"; }
};

/// Enough for every row of both tables; may be raised.
inline constexpr int kMostChoicesPerRow = 4;

/// A kind of file.
struct ExportKind {
    const char* name; ///< as in `ExportOptions::format`, and the suffix of file names
    ExportWriter writer;
    const char* container = ""; ///< what libav calls it, if libav writes it
    const char* codec = "";     ///< the default codec; empty: the writer's own default
    /// How the window offers the kind by itself. Rows without an id are empty.
    ExportChoice choices[kMostChoicesPerRow] = {};

    /// Whether a file holds a single frame.
    bool IsPicture() const { return writer == ExportWriter::kPng || writer == ExportWriter::kLibavPicture; }
    /// Whether the module that knows libav is needed.
    bool NeedsLibav() const {
        return writer == ExportWriter::kLibav || writer == ExportWriter::kLibavPicture;
    }
    /// Whether frames can go into it exactly as the plug-in delivered them.
    bool TakesNative() const { return writer == ExportWriter::kRaw; }
    /// Whether there are codecs to choose from.
    bool TakesCodec() const { return writer != ExportWriter::kPng && !TakesNative(); }
};

/// An option of an encoder that matters.
struct CodecOption {
    const char* name;
    const char* about;
};

/// A codec of libav that goes by a name of ours.
struct ExportCodec {
    const char* name;    ///< as in `ExportOptions::codec`
    const char* encoder; ///< which of libav's encoders is preferred
    /// Bits of a sample, if nothing else is asked for: fewer than the encoder takes if few players show more.
    int mostBits = 16;
    int leastBits = 8; ///< the same; more than the frames need if few programs read fewer
    /// How the window offers the codec. Rows without an id are empty.
    ExportChoice choices[kMostChoicesPerRow] = {};
    const char* about = "";   ///< what it is good for, a sentence without a full stop
    const char* format = "";  ///< a kind of file that it goes into
    const char* example = ""; ///< as in `ExportOptions::codec`, with options
    /// Rows without a name are empty.
    CodecOption options[kMostChoicesPerRow] = {};
};

/// What a person can set of H.264. The defaults are those of every export.
struct H264Settings {
    int quality = 18; ///< constant rate factor, from `kH264BestQuality` to `kH264WorstQuality`
    std::string preset = "medium";
};
inline constexpr int kH264BestQuality = 1; ///< 0 is lossless, which most players can't show
inline constexpr int kH264WorstQuality = 51;

/// The presets of H.264, quickest first.
std::span<const char* const> H264Presets();

std::span<const ExportKind> ExportKinds();   ///< in the order in which texts list them
std::span<const ExportCodec> ExportCodecs(); ///< those that the window offers come first
/// What the window offers: all rows of codecs and kinds. The first suits most people.
std::span<const ExportChoice> ExportChoices();

/// The kind of this name; null if it is none of ours. Other containers of libav have no row.
const ExportKind* FindExportKind(std::string_view name);
/// The choice of this id; null if there is none.
const ExportChoice* FindExportChoice(std::string_view id);

/// The names of all kinds, or of those that are written without libav: "png, y4m or raw", with `last` for
/// "or".
std::string ListKinds(bool withLibav = true, std::string_view last = " or ");
/// The names of the codecs that the window offers: "h264, prores, v210", without a last word.
std::string ListCodecs();

} // namespace corvane
