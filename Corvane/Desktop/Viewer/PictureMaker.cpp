#include "PictureMaker.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <exception>
#include <new>
#include <tuple>
#include <utility>

#include "Engine/Failure.h"

namespace corvane::desktop {

namespace {

/// More lines than this are not averaged for one row of a picture: of very large frames some are left out.
constexpr std::uint32_t kMaxLines = 16;

constexpr std::uint8_t kLightSquare = 0xFF;
constexpr std::uint8_t kDarkSquare = 0xC8;

bool AreOpaque(const std::uint8_t* pixels, std::uint32_t count) {
    std::uint32_t all = 0xFF000000u;
    for (std::uint32_t x = 0; x < count; ++x) {
        std::uint32_t pixel;
        std::memcpy(&pixel, pixels + std::size_t{x} * 4, sizeof pixel);
        all &= pixel;
    }
    return all == 0xFF000000u;
}

void Premultiply(std::uint8_t* pixels, std::uint32_t count) {
    if (AreOpaque(pixels, count)) return;
    for (std::uint32_t x = 0; x < count; ++x, pixels += 4) {
        const unsigned alpha = pixels[3];
        if (alpha == 0xFF) continue;
        for (int i = 0; i < 3; ++i) pixels[i] = static_cast<std::uint8_t>((pixels[i] * alpha + 0x7F) / 0xFF);
    }
}

/// A premultiplied pixel over the checkerboard, as QImage's Format_RGB32 has it.
QRgb Over(const std::uint8_t* pixel, std::uint8_t square) {
    const unsigned rest = (0xFFu - pixel[3]) * square;
    const auto part = [&](int i) { return std::min(pixel[i] + (rest + 0x7F) / 0xFF, 0xFFu); };
    return 0xFF000000u | part(2) << 16 | part(1) << 8 | part(0);
}

/// One row of a picture: what is flat, and what differs.
class RowPainter {
  public:
    RowPainter(const ScaleAxis& axis, const Box& box, std::uint32_t firstColumn, const PictureLook& look)
        : mAxis(axis), mLook(look), mFirst(firstColumn) {
        // Pixel 0 of a line is never inside of the box, and all pixels outside are like it.
        while (mEnd < look.part.width() && !box.Empty() &&
               axis.TapsOf(mEnd).front().line - mFirst < box.right)
            ++mEnd;
        while (mBegin < mEnd && axis.TapsOf(mBegin).back().line - mFirst < box.left) ++mBegin;
    }

    /// How many pixels of a line the row is made of.
    std::uint32_t Columns() const {
        return mBegin < mEnd ? mAxis.TapsOf(mEnd - 1).back().line - mFirst + 1 : 1;
    }

    /// `average` is one pixel if the row is flat.
    void Paint(const std::uint8_t* average, bool flat, int y, QRgb* out) const {
        const int band = (mLook.part.top() + y) / mLook.square;
        PaintFlat(average, band, out);
        if (flat) return;
        for (int x = mBegin; x < mEnd; ++x) {
            Sums sums = Sums{} + ScaleAxis::kWhole / 2;
            for (const ScaleAxis::Tap& tap : mAxis.TapsOf(x)) {
                Bytes bytes;
                std::memcpy(&bytes, average + std::size_t{tap.line - mFirst} * 4, sizeof bytes);
                sums += __builtin_convertvector(bytes, Sums) * tap.weight;
            }
            const Bytes pixel = __builtin_convertvector(sums / ScaleAxis::kWhole, Bytes);
            std::memcpy(&out[x], &pixel, sizeof pixel);
            if (pixel[3] != 0xFF)
                out[x] = Over(reinterpret_cast<const std::uint8_t*>(&pixel), SquareAt(x, band));
        }
    }

  private:
    // A pixel, as vectors of the compiler.
    using Bytes [[gnu::vector_size(4)]] = std::uint8_t;
    using Sums [[gnu::vector_size(8)]] = std::uint16_t; // all weights together make 256

    std::uint8_t SquareAt(int x, int band) const {
        return ((mLook.part.left() + x) / mLook.square + band) % 2 == 0 ? kLightSquare : kDarkSquare;
    }

    void PaintFlat(const std::uint8_t* pixel, int band, QRgb* out) const {
        const QRgb colors[2] = {Over(pixel, kLightSquare), Over(pixel, kDarkSquare)};
        const int width = mLook.part.width();
        if (colors[0] == colors[1]) {
            std::fill(out, out + width, colors[0]);
            return;
        }
        for (int x = 0; x < width; ++x) out[x] = colors[SquareAt(x, band) == kLightSquare ? 0 : 1];
    }

    const ScaleAxis& mAxis;
    const PictureLook& mLook;
    const std::uint32_t mFirst;
    int mBegin = 0; // device pixels that touch the box
    int mEnd = 0;
};

/// The lines of a view, thinned out if there are far more of them than rows of the picture.
ShownLines Thinned(ShownLines lines, int result) {
    const std::uint32_t stride = lines.count / (static_cast<std::uint32_t>(result) * kMaxLines) + 1;
    lines.step *= stride;
    lines.count = (lines.count + stride - 1) / stride;
    return lines;
}

} // namespace

std::uint64_t FrameBytes(const Clip& clip) {
    return clip.Info().format.BytesPerFrame();
}

Picture PictureMaker::Make(PictureRequest request) {
    const auto start = std::chrono::steady_clock::now();
    Picture picture;
    try {
        picture.frame = std::exchange(request.held, nullptr);
        if (!picture.frame)
            picture.frame = std::make_shared<const Frame>(request.clip->GetFrame(request.frame));
        picture.image = MakeImage(request, picture.frame->View());
    } catch (const std::bad_alloc&) {
        picture.problem =
            QStringLiteral("%1: there is not enough memory to show frame %2.")
                .arg(QString::fromStdString(request.clip->Name()), QString::number(request.frame));
    } catch (const Failure& failure) {
        picture.problem = QString::fromUtf8(failure.what());
    } catch (const std::exception& exception) {
        picture.problem = QStringLiteral("%1: frame %2 can't be shown (%3).")
                              .arg(QString::fromStdString(request.clip->Name()),
                                   QString::number(request.frame), QString::fromUtf8(exception.what()));
    }
    picture.request = std::move(request);
    picture.nanoseconds = (std::chrono::steady_clock::now() - start) / std::chrono::nanoseconds(1);
    return picture;
}

QImage PictureMaker::MakeImage(const PictureRequest& request, const FrameView& frame) {
    const PictureLook& look = request.look;
    const ShownLines lines = Thinned(LinesOf(frame.height, look.fields), look.size.height());
    const QRect& part = look.part;
    const ScaleAxis down(frame.height, lines.step, lines.count, look.size.height(), part.top(),
                         part.top() + part.height());
    const ScaleAxis across(frame.width, 1, frame.width, look.size.width(), part.left(),
                           part.left() + part.width());
    FrameView view = frame;
    view.pixels = frame.At(across.FirstLine(), lines.RowOf(down.FirstLine()));
    view.rowBytes = frame.rowBytes * static_cast<std::int32_t>(lines.step);
    view.width = across.LastLine() - across.FirstLine() + 1;
    view.height = down.LastLine() - down.FirstLine() + 1;

    const Box box = FindBox(view);
    const RowPainter painter(across, box, across.FirstLine(), look);
    Open(*request.clip, view, box, painter.Columns());

    QImage image(part.size(), QImage::Format_RGB32);
    if (image.isNull()) throw std::bad_alloc();
    for (int y = 0; y < part.height(); ++y) {
        const bool flat = AverageLines(down.TapsOf(y), down.FirstLine());
        painter.Paint(mAverage.data(), flat, y, reinterpret_cast<QRgb*>(image.scanLine(y)));
    }
    return image;
}

// Generated frames are lines of one color with at most a number on them: all that is read of a line without
// any of it is the first pixel.
void PictureMaker::Open(const Clip& clip, const FrameView& view, const Box& box, std::uint32_t columns) {
    mBox = box.Empty() ? Box{} : box;
    mReader.Open(clip, view, mBox);
    mColumns = columns;
    mLines.resize(std::size_t{mColumns} * 4 * 2);
    mSums.resize(std::size_t{mColumns} * 4);
    mAverage.resize(std::size_t{mColumns} * 4);
    mLineAt[0] = mLineAt[1] = 0;
}

void PictureMaker::LineReader::Open(const Clip& clip, const FrameView& view, const Box& box) {
    constexpr PackedFormat kBGRA{{2, 1, 0, 3}, 4, 8, false};
    const StreamFacts facts = FactsOf(clip, 1);
    const auto key = [](const StreamFacts& of) {
        return std::tuple(of.raster, of.tags.matrix, of.tags.primaries, of.tags.transfer);
    };
    if (!mReader || key(facts) != key(mFacts)) {
        mReader.emplace(facts, kBGRA);
        mFacts = facts;
    }
    mReader->Begin(view, box);
}

void PictureMaker::LineReader::Read(std::uint32_t line, std::uint32_t count, std::uint8_t* out) {
    mReader->Read(line, count, reinterpret_cast<std::byte*>(out));
    if (mFacts.HasAlpha()) return Premultiply(out, count);
    // The bytes of an ignored alpha can be anything.
    for (std::uint32_t x = 0; x < count; ++x) out[x * 4 + 3] = 0xFF;
}

const std::uint8_t* PictureMaker::LineOf(std::uint32_t line) {
    const std::size_t slot = line % 2;
    std::uint8_t* const pixels = mLines.data() + slot * mColumns * 4;
    if (mLineAt[slot] == line + 1) return pixels;
    mReader.Read(line, mColumns, pixels);
    mLineAt[slot] = line + 1;
    return pixels;
}

/// Averages lines and says whether they are all flat; then the average is one pixel.
bool PictureMaker::AverageLines(std::span<const ScaleAxis::Tap> taps, std::uint32_t firstLine) {
    const bool flat =
        std::ranges::all_of(taps, [&](const auto& tap) { return IsFlat(tap.line - firstLine); });
    const std::size_t count = flat ? 4 : mSums.size();
    std::uint16_t* const sums = mSums.data();
    std::fill(sums, sums + count, std::uint16_t{ScaleAxis::kWhole / 2});
    for (const ScaleAxis::Tap& tap : taps) {
        std::uint8_t pixel[4];
        if (flat) mReader.Read(tap.line - firstLine, 1, pixel);
        const std::uint8_t* const line = flat ? pixel : LineOf(tap.line - firstLine);
        for (std::size_t i = 0; i < count; ++i)
            sums[i] = static_cast<std::uint16_t>(sums[i] + line[i] * tap.weight);
    }
    std::uint8_t* const average = mAverage.data();
    for (std::size_t i = 0; i < count; ++i)
        average[i] = static_cast<std::uint8_t>(sums[i] / ScaleAxis::kWhole);
    return flat;
}

} // namespace corvane::desktop
