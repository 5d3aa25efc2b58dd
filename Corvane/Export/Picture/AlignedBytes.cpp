#include "AlignedBytes.h"

#include <new>

namespace corvane {

void AlignedBytes::Free::operator()(std::byte* bytes) const {
    ::operator delete(bytes, std::align_val_t(kAlignment));
}

std::byte* AlignedBytes::Get(std::size_t size) {
    if (size > mSize || !mBytes) {
        mBytes.reset();
        mBytes.reset(static_cast<std::byte*>(::operator new(Aligned(size), std::align_val_t(kAlignment))));
        mSize = size;
    }
    return mBytes.get();
}

} // namespace corvane
