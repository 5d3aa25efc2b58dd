#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

/// For how many fields each frame is shown, one after the other, and whether that repeats itself. Keeps a
/// fixed number of counts. One thread at a time.
class FieldCadence {
  public:
    /// Adds a field that shows the frame `frame`, in the order of time.
    void Add(std::int64_t frame);
    /// The shortest pattern that the counts repeat, the smallest possible rotation of it ("2:3",
    /// "2:2:2:4"); empty if there is none or every frame is shown for two fields. Throws `std::bad_alloc`.
    std::string Pattern() const;

  private:
    static constexpr std::size_t kKept = 64;
    static constexpr std::size_t kLongest = 12;

    std::array<int, kKept> mCounts{}; // of the first frames
    std::size_t mKept = 0;
    std::int64_t mFrame = 0;
    int mCount = 0; // fields of the current frame so far; 0 before the first
    bool mFirstPassed = false;
};

} // namespace corvane
