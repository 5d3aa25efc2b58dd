#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>

#include "Engine/Clip.h"
#include "corvane/engine.h"

struct corvane_importer {
    std::shared_ptr<corvane::Bundle> bundle;
};

struct corvane_clip {
    std::unique_ptr<corvane::Clip> clip;
};

struct corvane_frame {
    corvane::Frame frame;
};

namespace corvane::bindings {

/// Fills a caller's structure, which may be of an older or a newer version, with what is in `full`: the
/// members that both know; others of the caller's are set to 0.
template <class Structure>
void Hand(const Structure& full, Structure& callers) {
    const std::size_t size = callers.struct_size;
    const std::size_t begin = sizeof full.struct_size;
    if (size <= begin) return;
    auto* const bytes = reinterpret_cast<std::byte*>(&callers);
    std::memset(bytes + begin, 0, size - begin);
    std::memcpy(bytes + begin, reinterpret_cast<const std::byte*>(&full) + begin,
                std::min(size, sizeof full) - begin);
}

/// The other way: takes what a caller's structure has, and 0 for the rest.
template <class Structure>
Structure Taken(const Structure& callers) {
    Structure full{};
    std::memcpy(&full, &callers, std::min(callers.struct_size, sizeof full));
    return full;
}

} // namespace corvane::bindings
