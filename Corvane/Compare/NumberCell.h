#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "NumberReader.h"
#include "PlaneView.h"
#include "Services/Raster/NumberPrint.h"
#include "Services/Raster/RasterkitStrokes.h"

namespace corvane {

/// Where a frame's number is printed, as pixels of the frame, and how large a picture shows it.
struct NumberGrid {
    raster::PrintLayout layout; ///< of one character
    NumberPlace place;

    /// The grid's column of the character at `cell`, counted from the first, at column `x` of the picture.
    double ColumnAt(int cell, double x) const {
        const double frame = (x - place.left) / place.scaleX;
        return (frame - static_cast<double>(layout.glyphs.left + cell * layout.advance)) * UnitsPerPixel();
    }
    double RowAt(double y) const {
        return ((y - place.top) / place.scaleY - static_cast<double>(layout.glyphs.top)) * UnitsPerPixel();
    }
    /// The way back.
    double XAt(int cell, double column) const {
        const double frame =
            column / UnitsPerPixel() + static_cast<double>(layout.glyphs.left + cell * layout.advance);
        return place.left + frame * place.scaleX;
    }
    double YAt(double row) const {
        return place.top + (row / UnitsPerPixel() + static_cast<double>(layout.glyphs.top)) * place.scaleY;
    }
    double UnitsPerPixel() const { return double{raster::kGlyphHeight} / layout.glyphHeight; }
};

/// The layout of a clip's frame numbers with that many characters. Any thread.
raster::PrintLayout FrameNumberLayout(Size frame, std::size_t count);

/// What one character's place shows.
struct CellReading {
    int glyph = 0;       ///< the likeliest
    double fit = 0;      ///< how well it explains the samples: the correlation, at most 1
    double doubt = 1;    ///< the error that it leaves over that of the second likeliest, 0 to 1
    double contrast = 0; ///< light less dark, by the likeliest
    double dark = 0;     ///< the box, likewise
    double mean = 0;     ///< of the samples
    // Two characters at once:
    std::array<int, 2> pair{}; ///< the likeliest two, the stronger first
    double pairFit = 0;        ///< as `fit`
    double weaker = 0;         ///< the weaker one's share of the contrast, up to 0.5
    double pairContrast = 0;   ///< both together
};

/// Samples of one character's place, and what each character would look like there. One thread at a time.
class NumberCell {
  public:
    /// For a character of the print that lies whole in the view. Throws `std::bad_alloc`.
    NumberCell(const NumberGrid& grid, int cell, const PlaneView& view);

    /// Whether the place with its margin lies whole in the view.
    static bool IsInside(const NumberGrid& grid, int cell, const PlaneView& view);

    /// Takes the samples of a picture: what `Read` looks at from now on.
    void Sample(const PlaneView& view);

    /// Reads the character in even rows (0), in odd rows (1), or in all (2) of the view.
    CellReading Read(int rows) const;

    /// How well `glyph` would explain the samples of even rows (0), of odd rows (1), or of all (2) if they
    /// lay in another grid: the error that it leaves, and the sum that it starts from.
    std::array<double, 2> ErrorIn(const NumberGrid& grid, int glyph, int rows) const;

  private:
    static constexpr std::size_t kGlyphs = raster::kGlyphCount;
    static constexpr std::size_t kPadded = 12;
    // Sums over samples: of them, of their squares, of what characters cover, and of products.
    struct Moments {
        double count = 0;
        double sum = 0;
        double squares = 0;
        std::array<double, kPadded> product{};
        void Add(const Moments& other);
    };
    struct Templates {
        std::array<double, kGlyphs> sum{};
        std::array<std::array<double, kGlyphs>, kGlyphs> product{};
        void Add(const Templates& other);
    };

    void Cover(const NumberGrid& grid);
    void ReadPair(const Moments& moments, const Templates& templates, double variance,
                  CellReading& reading) const;

    int mCell;
    std::vector<std::uint32_t> mColumns;
    std::vector<std::uint32_t> mRows; // the even ones first
    std::size_t mEvenRows = 0;
    std::vector<std::array<float, kPadded>> mCover; // of each sample
    std::vector<float> mSamples;
    std::array<Moments, 3> mMoments;
    std::array<Templates, 3> mTemplates;
};

} // namespace corvane
