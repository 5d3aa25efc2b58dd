#pragma once

#include <cstddef>
#include <memory>

namespace corvane {

/// What memory for vector code is aligned to.
inline constexpr std::size_t kAlignment = 64;

/// `size` rounded up to the alignment.
constexpr std::size_t Aligned(std::size_t size) {
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

/// Memory that starts at a multiple of the alignment. Grows, never shrinks; its content does not survive
/// growing. One thread at a time.
class AlignedBytes {
  public:
    /// At least `size` bytes, owned by this object; they move when it grows. Throws `std::bad_alloc`.
    std::byte* Get(std::size_t size);

  private:
    struct Free {
        void operator()(std::byte* bytes) const;
    };
    std::unique_ptr<std::byte, Free> mBytes;
    std::size_t mSize = 0;
};

} // namespace corvane
