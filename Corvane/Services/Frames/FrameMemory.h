/// The memory of one frame. Private to the frame-buffer suites.
#pragma once

#include <cstddef>

namespace corvane {

/// Owns a block of memory for pixels. Moved, never copied. Any thread; one block by one thread at a time.
class FrameMemory {
  public:
    /// Owns nothing.
    FrameMemory() = default;
    /// Takes at least `bytes` bytes from the system, which begin at a page; their contents are whatever the
    /// memory held. Large blocks use huge pages where the kernel has them. The result is empty when memory
    /// runs out.
    static FrameMemory Allocate(std::size_t bytes) noexcept;
    ~FrameMemory();
    FrameMemory(FrameMemory&& other) noexcept;
    FrameMemory& operator=(FrameMemory&& other) noexcept;

    explicit operator bool() const { return mBase != nullptr; }
    /// Its first byte, at the start of a page; null if it owns nothing.
    std::byte* Base() const { return mBase; }
    /// How many bytes it has: what `RoundUp` says of those asked for.
    std::size_t Bytes() const { return mBytes; }

    /// What `Allocate` really takes for that many bytes.
    static std::size_t RoundUp(std::size_t bytes);

  private:
    FrameMemory(std::byte* base, std::size_t bytes) : mBase(base), mBytes(bytes) {}

    std::byte* mBase = nullptr;
    std::size_t mBytes = 0;
};

} // namespace corvane
