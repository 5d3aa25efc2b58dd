#include "FrameMemory.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

#include <sys/mman.h>

namespace corvane {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Smaller blocks come from the heap.
constexpr std::size_t kSmallestMapping = kHugePage;

constexpr std::size_t RoundUpTo(std::size_t unit, std::size_t bytes) {
    return (bytes + unit - 1) / unit * unit;
}

// Maps whole huge pages. The kernel aligns mappings to ordinary pages only, so one huge page more is mapped
// and the ends that stick out are given back.
std::byte* MapHugePages(std::size_t bytes) {
    const std::size_t mappedBytes = bytes + kHugePage;
    void* mapped = mmap(nullptr, mappedBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;

    auto* const start = static_cast<std::byte*>(mapped);
    const std::size_t before = (kHugePage - reinterpret_cast<std::uintptr_t>(start) % kHugePage) % kHugePage;
    const std::size_t after = kHugePage - before;
    if (before) munmap(start, before);
    if (after) munmap(start + before + bytes, after);
#if defined(MADV_HUGEPAGE)
    // Fresh memory by ordinary pages is filled at a fortieth of the speed. A kernel without huge pages
    // refuses, which is no error.
    madvise(start + before, bytes, MADV_HUGEPAGE);
#endif
    return start + before;
}

} // namespace

std::size_t FrameMemory::RoundUp(std::size_t bytes) {
    if (bytes < kPage) return kPage; // a frame without pixels has an address, too
    return RoundUpTo(bytes < kSmallestMapping ? kPage : kHugePage, bytes);
}

FrameMemory FrameMemory::Allocate(std::size_t bytes) noexcept {
    const std::size_t rounded = RoundUp(bytes);
    void* const base =
        rounded < kSmallestMapping ? std::aligned_alloc(kPage, rounded) : MapHugePages(rounded);
    if (!base) return {};
    return {static_cast<std::byte*>(base), rounded};
}

FrameMemory::~FrameMemory() {
    if (mBytes < kSmallestMapping)
        std::free(mBase);
    else
        munmap(mBase, mBytes);
}

FrameMemory::FrameMemory(FrameMemory&& other) noexcept
    : mBase(std::exchange(other.mBase, nullptr)), mBytes(std::exchange(other.mBytes, 0)) {}

FrameMemory& FrameMemory::operator=(FrameMemory&& other) noexcept {
    std::swap(mBase, other.mBase);
    std::swap(mBytes, other.mBytes);
    return *this;
}

} // namespace corvane
