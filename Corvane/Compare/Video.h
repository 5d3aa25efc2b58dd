#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "Engine/ClipFormat.h"
#include "Export/Picture/PictureConverter.h"

namespace corvane {

/// How a video, or one picture of it, says that its samples are to be understood. Code points of ITU-T H.273;
/// 2 means that it does not say.
struct VideoTags {
    int matrix = 2;
    int primaries = 2;
    int transfer = 2;
    std::optional<bool> fullRange;

    bool operator==(const VideoTags&) const = default;
};

/// Times of pictures are nearer to 0 than this, so that the difference of two is a number, too.
inline constexpr std::int64_t kTimeLimit = std::int64_t{1} << 61;

/// What a video says of itself. Of a numbered picture sequence the times are the numbers in the names of its
/// files, and there are no rates and no time base.
struct VideoFacts {
    std::string name;        ///< the path as given, for messages
    std::string container;   ///< as libav calls it
    std::string codec;       ///< as libav calls it
    std::string pixelFormat; ///< as libav calls it
    Size size{};
    std::optional<PixelAspect> aspect; ///< none if it does not say
    Rate nominalRate{};                ///< none (0/0) if it does not say
    Rate averageRate{};
    std::optional<FieldOrder> order; ///< of the container or the codec's header
    VideoTags tags;
    /// A unit of time is `timeBase.scale / timeBase.sampleSize` seconds.
    Rate timeBase{};
    std::optional<std::int64_t> duration; ///< in units of time
    std::optional<std::int64_t> pictures; ///< how many the container says there are
    /// Why it could not be read to its end, as a clause; empty until then, and if nothing was in the way.
    std::string whyCut;
};

/// One decoded picture. Planes Y', Cb, Cr, A or R', G', B', A (`format`), valid as long as `owner`. Row r of
/// a plane begins at `plane + r * stride`. A picture of gray alone has chroma of one row, with a stride of 0.
struct VideoPicture {
    PlanarFormat format;
    Size size{};
    std::array<const std::byte*, 4> plane{};
    std::array<std::ptrdiff_t, 4> stride{};
    std::shared_ptr<const void> owner;
    std::optional<std::int64_t> time; ///< when it is shown, in units of time
    FieldOrder order = FieldOrder::kProgressive;
    bool repeatsField = false; ///< whether the first field is to be shown again
    bool damaged = false;      ///< the decoder says so
    VideoTags tags;            ///< of the picture, or of the video if it says nothing

    /// The start of a row.
    const std::byte* Row(int at, std::uint32_t y) const {
        return plane[static_cast<std::size_t>(at)] + stride[static_cast<std::size_t>(at)] * std::ptrdiff_t{y};
    }
};

/// A video that is read picture by picture, in the order in which they are shown. One thread at a time.
class Video {
  public:
    virtual ~Video() = default;
    virtual const VideoFacts& Facts() const = 0;
    /// Decodes the next picture. Returns false at the end. Throws `Failure` with the video's name and the
    /// reason if nothing more can be read, and `std::bad_alloc`.
    virtual bool Next(VideoPicture& picture) = 0;
    /// Goes to a place from which `Next` comes to the picture that is shown at `time`, near before it if the
    /// video can tell. Returns false, and stays, if it can't be sought. Throws `std::bad_alloc`.
    virtual bool SeekBefore(std::int64_t time) = 0;
    /// Ends the wait for data of a pipe: from now on `Next` finds the end soon. Any thread.
    virtual void Stop() = 0;
};

/// Opens any file that libav decodes, a numbered picture sequence ("out.%05d.png"), or "-" for what comes on
/// standard input (Y4M, NUT, Matroska ...). The module that knows libav is loaded for it. Throws `Failure` as
/// `FindInModule` does, and with the name, the reason and the remedy: no such file, no video in it,
/// nothing that can be decoded. A pipe is waited for until `cancel` becomes true, which is a `Failure`, too;
/// it may be null, and outlives the video. Any thread.
std::unique_ptr<Video> OpenVideo(const std::filesystem::path& path,
                                 const std::atomic<bool>* cancel = nullptr);

/// The name of the module's function that opens videos, which is of type `OpenLibavVideoFunction`.
inline constexpr const char* kOpenLibavVideoName = "CorvaneOpenLibavVideo";
/// Makes a video that the caller owns. Throws as `OpenVideo` does.
using OpenLibavVideoFunction = Video*(const std::filesystem::path& path, const std::atomic<bool>* cancel);

} // namespace corvane
