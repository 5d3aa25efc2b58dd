#pragma once

#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "GradientKeys.h"

namespace corvane {

/// What is tried when rows are none of the clip's.
struct GradientChanges {
    /// What may have been done to colors.
    std::vector<std::function<Color(const Color&)>> colors;
    /// Whether the video's size and pixel aspect look as if frames were cropped rather than scaled.
    bool looksCropped = false;
};

/// How much is tried.
enum class Care {
    kQuick,    ///< colors, and upside down; lines that were moved or scaled only in frames of another height
    kThorough, ///< all, which takes some milliseconds
    kBeyondDoubt ///< as quick, and nothing is said that more pictures might change
};

/// How far rows may be off colors that explain them, in steps of 8 bits.
inline constexpr double kMostGradientError = 2.5;

/// Finds what explains pictures that aren't the clip's frames as they are: turned upside down, other colors,
/// lines cut off, moved or scaled, or some of these together. Any thread.
class GradientSearch {
  public:
    /// Throws `std::bad_alloc`.
    GradientSearch(GradientKeys keys, GradientChanges changes)
        : mKeys(std::move(keys)), mChanges(std::move(changes)) {}

    const GradientKeys& Keys() const { return mKeys; }

    /// What explains the pictures best, whose clip lies in `rows`; none if nothing does so well. Throws
    /// `std::bad_alloc`.
    std::optional<GradientGuess> Find(const RowRange& rows, const std::vector<GradientRows>& pictures,
                                      Care care) const;

  private:
    struct Rated {
        GradientGuess guess;
        double error = 1e9; // root mean square, in steps of 8 bits

        bool Explains() const { return error <= kMostGradientError; }
    };
    struct Task {
        const RowRange& rows;
        const std::vector<GradientRows>& pictures;
    };

    Rated Rate(const Task& task, GradientGuess guess) const;
    Rated Whole(const Task& task, const GradientGuess& guess) const;
    Rated Moved(const Task& task, const GradientGuess& guess) const;
    Rated Zoomed(const Task& task, const GradientGuess& guess) const;
    Rated Shaped(const Task& task) const;
    Rated Colored(const Task& task, bool cropped) const;

    GradientKeys mKeys;
    GradientChanges mChanges;
};

} // namespace corvane
