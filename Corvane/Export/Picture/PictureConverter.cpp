#include "PictureConverter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "PixelRows.h"

namespace corvane {
namespace {

// Columns of the narrow picture that stands for rows of one color, and the one that is spread.
constexpr std::uint32_t kStripWidth = 16;
// More than the reach of the chroma filter, in pixels; twice that of a field's rows.
constexpr std::uint32_t kReach = 8;
constexpr std::size_t kMaximumGraphs = 32;

constexpr std::uint32_t Down(std::uint32_t value, std::uint32_t step) {
    return value / step * step;
}

constexpr std::uint32_t Up(std::uint32_t value, std::uint32_t step) {
    return Down(value + step - 1, step);
}

// The box with `margin` more on all sides and its sides at multiples of the steps, inside the frame.
Box Grown(const Box& box, std::uint32_t margin, std::uint32_t stepX, std::uint32_t stepY, const Box& frame) {
    return {Down(box.left - std::min(box.left, margin), stepX),
            Down(box.top - std::min(box.top, margin), stepY),
            std::min(Up(box.right + margin, stepX), frame.right),
            std::min(Up(box.bottom + margin, stepY), frame.bottom)};
}

template <class Sample>
void FillWith(std::byte* out, const std::byte* sample, std::size_t count) {
    Sample value;
    std::memcpy(&value, sample, sizeof value);
    std::fill_n(reinterpret_cast<Sample*>(out), count, value);
}

void FillSamples(std::byte* out, const std::byte* sample, std::size_t sampleBytes, std::size_t count) {
    switch (sampleBytes) {
    case 1: return FillWith<std::uint8_t>(out, sample, count);
    case 2: return FillWith<std::uint16_t>(out, sample, count);
    default: return FillWith<std::uint32_t>(out, sample, count);
    }
}

RowPlanes RowOf(PlaneBuffer& planes, std::uint32_t row) {
    RowPlanes rows;
    for (int plane = 0; plane < 4; ++plane) rows.plane[plane] = planes.Row(plane, row);
    return rows;
}

std::int32_t SampleAt(const std::byte* at, std::size_t sampleBytes) {
    std::int32_t value = 0;
    std::memcpy(&value, at, sampleBytes);
    return value;
}

// Linear light that stays so is taken as it is.
RK_PixelFormat ReadAs(RK_PixelFormat raster, const PlanarFormat& format) {
    const bool staysLinear = format.IsFloat() && (raster & kRK_Linear) != 0;
    return staysLinear ? raster & ~RK_PixelFormat{kRK_Linear | kRK_Premultiplied} : raster;
}

} // namespace

std::uint32_t PlanarFormat::PlaneWidth(int plane, std::uint32_t width) const {
    return plane == 1 || plane == 2 ? (width + (1u << subsampleW) - 1) >> subsampleW : width;
}

std::uint32_t PlanarFormat::PlaneHeight(int plane, std::uint32_t height) const {
    return plane == 1 || plane == 2 ? (height + (1u << subsampleH) - 1) >> subsampleH : height;
}

/// Some rows of a frame: all of a region's, or every other one.
struct PictureConverter::Field {
    std::uint32_t first = 0; // row of the frame
    std::uint32_t step = 1;
    std::uint32_t rows = 0;
    std::uint32_t paddedRows = 0; // as zimg needs them for subsampling
    int parity = ZIMG_FIELD_PROGRESSIVE;

    Field(std::uint32_t top, std::uint32_t bottom, std::uint32_t index, std::uint32_t fields, int subsampleH)
        : first(top + index), step(fields), rows((bottom - top - index + fields - 1) / fields),
          paddedRows(Up(rows, 1u << subsampleH)), parity(fields == 1  ? ZIMG_FIELD_PROGRESSIVE
                                                         : index == 0 ? ZIMG_FIELD_TOP
                                                                      : ZIMG_FIELD_BOTTOM) {}

    std::uint32_t RowOfFrame(std::uint32_t row) const { return first + row * step; }
};

PictureConverter::PictureConverter(const StreamFacts& facts, const PlanarFormat& format)
    : mFacts(facts), mFormat(format), mRead(ReadAs(facts.raster, format)),
      mPerField(facts.Interlaced() && format.subsampleH != 0 && facts.size.height > 1) {}

void PictureConverter::Convert(const FrameView& frame, const PlanarPicture& out, PaintedRows& painted) {
    const Box whole{0, 0, frame.width, frame.height};
    const Box box = FindBox(frame);
    const Box keep = box.Empty() ? Box{} : Grown(box, kReach, 2, 4, whole);
    const Box region = box.Empty() ? Box{} : Grown(keep, kReach, 64, 4, whole);
    PaintedRows rows = std::exchange(painted, {}); // not known, until all is done
    if (frame.width <= 2 * kStripWidth || region.Width() > frame.width / 2)
        return ConvertBox(frame, whole, whole, out);
    ConvertRows(frame, out, keep, rows);
    if (!box.Empty()) ConvertBox(frame, region, keep, out);
    rows.box = keep;
    painted = std::move(rows);
}

void PictureConverter::ConvertWhole(const FrameView& frame, const PlanarPicture& out) {
    const Box whole{0, 0, frame.width, frame.height};
    ConvertBox(frame, whole, whole, out);
}

void PictureConverter::ConvertRows(const FrameView& frame, const PlanarPicture& out, const Box& keep,
                                   PaintedRows& painted) {
    for (int plane = 0; plane < mFormat.Planes(); ++plane)
        painted.samples[std::size_t(plane)].resize(mFormat.PlaneHeight(plane, mFacts.size.height), -1);
    for (std::uint32_t i = 0; i < FieldCount(); ++i) {
        const Field field(0, frame.height, i, FieldCount(), mFormat.subsampleH);
        ConvertStrip(frame, field, mStrips[i]);
        Spread(field, mStrips[i], out, keep, painted);
    }
}

void PictureConverter::ConvertStrip(const FrameView& frame, const Field& field, Strip& strip) {
    const std::size_t pixelBytes = BytesPerPixel(mFacts.raster);
    mStarts.resize(field.rows * pixelBytes);
    for (std::uint32_t row = 0; row < field.rows; ++row)
        std::memcpy(mStarts.data() + row * pixelBytes, frame.At(0, field.RowOfFrame(row)), pixelBytes);
    if (mStarts == strip.starts) return;
    strip.starts.clear();
    UnpackStarts(field);
    RunField(field, kStripWidth, strip.planes);
    strip.starts.swap(mStarts);
}

void PictureConverter::ConvertBox(const FrameView& frame, const Box& region, const Box& keep,
                                  const PlanarPicture& out) {
    for (std::uint32_t i = 0; i < FieldCount(); ++i) {
        const Field field(region.top, region.bottom, i, FieldCount(), mFormat.subsampleH);
        UnpackBox(frame, region, field);
        RunField(field, Up(region.Width(), 1u << mFormat.subsampleW), mResult);
        KeepBox(region, keep, field, out);
    }
}

void PictureConverter::RunField(const Field& field, std::uint32_t width, PlaneBuffer& result) {
    for (int plane = 0; plane < mFormat.Planes(); ++plane)
        result.Shape(plane, mFormat.PlaneWidth(plane, width) * mFormat.SampleBytes(),
                     mFormat.PlaneHeight(plane, field.paddedRows));
    GraphFor(width, field.paddedRows, field.parity).Run(mSource, result);
    if (mFormat.IsFloat()) MakeLinear(result, width, field.paddedRows);
}

void PictureConverter::MakeLinear(PlaneBuffer& planes, std::uint32_t width, std::uint32_t rows) const {
    const bool isLinear = (mFacts.raster & kRK_Linear) != 0;
    const bool isPremultiplied = isLinear && (mFacts.raster & kRK_Premultiplied) != 0;
    for (std::uint32_t row = 0; row < rows; ++row) {
        const RowPlanes samples = RowOf(planes, row);
        if (!isLinear) LinearizeRow(width, samples);
        if (mFormat.alpha && !isPremultiplied) PremultiplyRow(width, samples);
    }
}

void PictureConverter::UnpackBox(const FrameView& frame, const Box& region, const Field& field) {
    const std::uint32_t padded = Up(region.Width(), 1u << mFormat.subsampleW);
    const std::size_t sample = BytesPerComponent(mFacts.raster);
    for (int plane = 0; plane < mFormat.Planes(); ++plane)
        mSource.Shape(plane, padded * sample, field.paddedRows);
    for (std::uint32_t row = 0; row < field.rows; ++row) {
        const std::byte* const pixels = frame.At(region.left, field.RowOfFrame(row));
        UnpackRow(pixels, region.Width(), mRead, RowOf(mSource, row));
    }
    PadRows(field, region.Width(), padded);
}

// Makes the source of the rows' first pixels, each all along its row.
void PictureConverter::UnpackStarts(const Field& field) {
    const std::size_t sample = BytesPerComponent(mFacts.raster);
    for (int plane = 0; plane < mFormat.Planes(); ++plane) {
        mColumn.Shape(plane, field.rows * sample, 1);
        mSource.Shape(plane, kStripWidth * sample, field.paddedRows);
    }
    UnpackRow(mStarts.data(), field.rows, mRead, RowOf(mColumn, 0));
    for (int plane = 0; plane < mFormat.Planes(); ++plane)
        for (std::uint32_t row = 0; row < field.rows; ++row)
            FillSamples(mSource.Row(plane, row), mColumn.Row(plane, 0) + row * sample, sample, kStripWidth);
    PadRows(field, kStripWidth, kStripWidth);
}

// Repeats the last column up to the width and the last row up to the padded number of rows.
void PictureConverter::PadRows(const Field& field, std::uint32_t width, std::uint32_t paddedWidth) {
    const std::size_t sample = BytesPerComponent(mFacts.raster);
    for (int plane = 0; plane < mFormat.Planes(); ++plane) {
        for (std::uint32_t row = 0; width != paddedWidth && row < field.rows; ++row) {
            std::byte* const start = mSource.Row(plane, row);
            const std::byte* const last = start + (width - 1) * sample;
            FillSamples(start + width * sample, last, sample, paddedWidth - width);
        }
        for (std::uint32_t row = field.rows; row < field.paddedRows; ++row)
            std::memcpy(mSource.Row(plane, row), mSource.Row(plane, field.rows - 1), paddedWidth * sample);
    }
}

// The samples of a plane that a box covers.
Box PictureConverter::InPlane(int plane, const Box& box) const {
    return {mFormat.PlaneWidth(plane, box.left), mFormat.PlaneHeight(plane, box.top),
            mFormat.PlaneWidth(plane, box.right),
            std::min(mFormat.PlaneHeight(plane, box.bottom), mFormat.PlaneHeight(plane, mFacts.size.height))};
}

void PictureConverter::KeepBox(const Box& region, const Box& keep, const Field& field,
                               const PlanarPicture& out) {
    const std::size_t sample = mFormat.SampleBytes();
    for (int plane = 0; plane < mFormat.Planes(); ++plane) {
        const Box box = InPlane(plane, keep);
        const std::size_t skip = (box.left - mFormat.PlaneWidth(plane, region.left)) * sample;
        const std::uint32_t first = mFormat.PlaneHeight(plane, region.top) + field.first - region.top;
        for (std::uint32_t row = 0; row < mFormat.PlaneHeight(plane, field.paddedRows); ++row) {
            const std::uint32_t y = first + row * field.step;
            if (y < box.top || y >= box.bottom) continue;
            std::memcpy(out.Row(plane, y) + box.left * sample, mResult.Row(plane, row) + skip,
                        box.Width() * sample);
        }
    }
}

// Writes the rows whose colors are others than before, and what the last box covered of the rest, unless the
// new one, `keep`, covers it again.
void PictureConverter::Spread(const Field& field, Strip& strip, const PlanarPicture& out, const Box& keep,
                              PaintedRows& painted) {
    const std::size_t sample = mFormat.SampleBytes();
    const bool covered = keep.Contains(painted.box);
    for (int plane = 0; plane < mFormat.Planes(); ++plane) {
        const Box old = covered ? Box{} : InPlane(plane, painted.box);
        const std::uint32_t width = mFormat.PlaneWidth(plane, mFacts.size.width);
        const std::size_t middle = mFormat.PlaneWidth(plane, kStripWidth) / 2 * sample;
        std::vector<std::int32_t>& samples = painted.samples[std::size_t(plane)];
        for (std::uint32_t row = 0; row < mFormat.PlaneHeight(plane, field.paddedRows); ++row) {
            const std::uint32_t y = field.first + row * field.step;
            if (y >= samples.size()) break;
            const std::byte* const from = strip.planes.Row(plane, row) + middle;
            const std::int32_t value = SampleAt(from, sample);
            if (samples[y] != value)
                FillSamples(out.Row(plane, y), from, sample, width);
            else if (y >= old.top && y < old.bottom)
                FillSamples(out.Row(plane, y) + old.left * sample, from, sample, old.Width());
            samples[y] = value;
        }
    }
}

ZimgGraph& PictureConverter::GraphFor(std::uint32_t width, std::uint32_t rows, int parity) {
    const auto key = std::make_tuple(width, rows, parity);
    if (const auto found = mGraphs.find(key); found != mGraphs.end()) return found->second;
    if (mGraphs.size() >= kMaximumGraphs) mGraphs.clear();
    return mGraphs
        .emplace(key, ZimgGraph(FormatOf(false, width, rows, parity), FormatOf(true, width, rows, parity)))
        .first->second;
}

zimg_image_format PictureConverter::FormatOf(bool result, std::uint32_t width, std::uint32_t rows,
                                             int parity) const {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    const bool yCbCr = result ? mFormat.yCbCr : mFacts.IsYCbCr();
    format.width = width;
    format.height = rows;
    format.field_parity = static_cast<zimg_field_parity_e>(parity);
    format.color_family = yCbCr ? ZIMG_COLOR_YUV : ZIMG_COLOR_RGB;
    format.matrix_coefficients =
        yCbCr ? static_cast<zimg_matrix_coefficients_e>(mFacts.tags.matrix) : ZIMG_MATRIX_RGB;
    format.pixel_range = !yCbCr || (result && mFormat.fullRange) ? ZIMG_RANGE_FULL : ZIMG_RANGE_LIMITED;
    format.alpha = mFormat.alpha ? ZIMG_ALPHA_STRAIGHT : ZIMG_ALPHA_NONE;
    if (result) {
        format.pixel_type = mFormat.IsFloat()  ? ZIMG_PIXEL_FLOAT
                            : mFormat.bits > 8 ? ZIMG_PIXEL_WORD
                                               : ZIMG_PIXEL_BYTE;
        format.depth = static_cast<unsigned>(mFormat.bits);
        format.subsample_w = static_cast<unsigned>(mFormat.subsampleW);
        format.subsample_h = static_cast<unsigned>(mFormat.subsampleH);
        format.chroma_location = ZIMG_CHROMA_LEFT;
    } else {
        format.pixel_type = mFacts.IsFloat() ? ZIMG_PIXEL_FLOAT : ZIMG_PIXEL_BYTE;
        format.depth = mFacts.IsFloat() ? 32 : 8;
    }
    return format;
}

} // namespace corvane
