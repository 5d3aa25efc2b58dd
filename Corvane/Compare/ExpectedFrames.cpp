#include "ExpectedFrames.h"

#include <algorithm>
#include <cstring>

#include "Engine/SettingsText.h"
#include "Export/Picture/AlignedBytes.h"

namespace corvane {
namespace {

constexpr std::uint32_t kNarrow = 16; // columns: enough for every subsampling and its filter

/// The clip with a few columns, if its rows move; else none. Numbers are not printed on it.
std::unique_ptr<Clip> NarrowClip(const Clip& clip) {
    ClipSettings settings = ReadSettings(clip.Settings());
    if (settings.renderFormat == 0 ||
        (settings.topStart == settings.topEnd && settings.bottomStart == settings.bottomEnd))
        return nullptr;
    settings.size.width = kNarrow;
    settings.fieldType = 0;
    return Clip::OpenPrefs(clip.MadeBy(), clip.Name(), WriteSettings(settings));
}

bool IsMatrix(int matrix) {
    return matrix == 1 || (matrix >= 4 && matrix <= 7) || matrix == 9;
}

} // namespace

ExpectedFrames::ExpectedFrames(const Clip& clip)
    : mClip(clip), mFacts(FactsOf(clip, clip.Info().frames)), mNarrowClip(NarrowClip(clip)),
      mDefinedRows(mFacts.size.height) {
    const bool ofFields = ReadSettings(clip.Settings()).renderFormat == 0;
    if (mFacts.Interlaced() && ofFields) mDefinedRows = std::max(mDefinedRows & ~1u, 1u);
    FindNumberBox();
}

void ExpectedFrames::FindNumberBox() {
    if (!mFacts.Interlaced()) return;
    // The last number is as long as any.
    const Frame last = mClip.GetFrame(std::min<std::int64_t>(mFacts.frames - 1, 0x7FFF'FFFF));
    mNumberBox = FindBox(last.View());
}

const FrameView& ExpectedFrames::Rows(std::int64_t index) {
    if (mNarrowClip == nullptr) {
        if (mIndex < 0) CopyStarts(mClip.GetFrame(index).View());
    } else if (mIndex != index) {
        mNarrowFrame = mNarrowClip->GetFrame(index);
        mRows = mNarrowFrame.View();
    }
    mIndex = index;
    return mRows;
}

void ExpectedFrames::CopyStarts(const FrameView& frame) {
    const std::size_t pixel = BytesPerPixel(frame.format);
    mStarts.resize(frame.height * kNarrow * pixel);
    for (std::uint32_t y = 0; y < frame.height; ++y)
        for (std::uint32_t x = 0; x < kNarrow; ++x)
            std::memcpy(mStarts.data() + (y * kNarrow + x) * pixel, frame.At(0, y), pixel);
    mRows = {mStarts.data(), static_cast<std::int32_t>(kNarrow * pixel), kNarrow, frame.height, frame.format};
}

void ExpectedFrames::Picture::Shape(const StreamFacts& facts, const PlanarFormat& format) {
    converter.emplace(facts, format);
    painted = {};
    std::array<std::size_t, 5> start{};
    for (int plane = 0; plane < format.Planes(); ++plane) {
        const auto at = static_cast<std::size_t>(plane);
        const std::size_t row = Aligned(format.PlaneWidth(plane, facts.size.width) * format.SampleBytes());
        planes.stride[at] = static_cast<std::ptrdiff_t>(row);
        start[at + 1] = start[at] + row * format.PlaneHeight(plane, facts.size.height);
    }
    bytes.resize(*std::ranges::max_element(start));
    for (std::size_t plane = 0; plane < 4; ++plane) planes.plane[plane] = bytes.data() + start[plane];
}

void ExpectedFrames::SetFormat(const ExpectedFormat& format) {
    if (mHasFormat && mFormat == format) return;
    StreamFacts facts = mFacts;
    // Deliberate: what the clip has as Y'CbCr is not converted between matrices.
    if (!facts.IsYCbCr() && IsMatrix(format.matrix)) facts.tags.matrix = format.matrix;
    PlanarFormat planar = format.planar;
    planar.alpha = planar.alpha && facts.HasAlpha();
    mWhole.Shape(facts, planar);
    facts.size.width = kNarrow;
    mNarrow.Shape(facts, planar);
    mFormat = format;
    mHasFormat = true;
    mCodesIndex = -1;
}

const RowCodes& ExpectedFrames::Codes(std::int64_t index, const ExpectedFormat& format) {
    SetFormat(format);
    const bool known = mCodesIndex >= 0 && (mCodesIndex == index || !RowsMove());
    if (!known) {
        mNarrow.converter->Convert(Rows(index), mNarrow.planes, mNarrow.painted);
        ReadCodes();
        mCodesIndex = index;
    }
    return mCodes;
}

void ExpectedFrames::ReadCodes() {
    const PlanarFormat& format = mFormat.planar;
    for (int plane = 0; plane < 4; ++plane) {
        std::vector<std::uint16_t>& codes = mCodes[static_cast<std::size_t>(plane)];
        const bool there = plane < 3 || (format.alpha && mFacts.HasAlpha());
        codes.resize(there ? format.PlaneHeight(plane, mFacts.size.height) : 0);
        const std::size_t middle = format.PlaneWidth(plane, kNarrow) / 2 * format.SampleBytes();
        for (std::uint32_t y = 0; y < codes.size(); ++y) {
            const std::byte* const sample = mNarrow.planes.Row(plane, y) + middle;
            codes[y] = std::to_integer<std::uint16_t>(*sample);
            if (format.bits > 8) std::memcpy(&codes[y], sample, sizeof codes[y]);
        }
    }
}

const PlanarPicture& ExpectedFrames::Whole(std::int64_t index, const ExpectedFormat& format) {
    SetFormat(format);
    const Frame frame = mClip.GetFrame(index);
    mWhole.converter->Convert(frame.View(), mWhole.planes, mWhole.painted);
    return mWhole.planes;
}

} // namespace corvane
