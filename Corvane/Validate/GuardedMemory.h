#pragma once

#include <cstddef>

namespace corvane {

/// Memory between two pages that can't be touched: whoever goes beyond a block that ends, or begins, beside
/// one of them ends the process. One thread at a time.
class GuardedMemory {
  public:
    /// Room for a block of up to `size` bytes. Throws `Failure` if the system has none.
    explicit GuardedMemory(std::size_t size);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    /// A block of `size` bytes, with whatever the memory held: it ends beside the page behind, or begins
    /// beside the page before. It takes the place of the last one, and lies in memory that can be written.
    std::byte* Place(std::size_t size, bool atEnd);
    /// From now on, whoever writes to the block ends the process.
    void Protect();

  private:
    void Allow(int access);

    std::size_t mSize; ///< whole pages, without the two
    std::byte* mPages; ///< the first of the two
    bool mProtected = false;
};

} // namespace corvane
