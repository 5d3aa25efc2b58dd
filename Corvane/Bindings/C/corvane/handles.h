/// For programs in C++: the objects of the C interface, given back when they go out of scope.
#pragma once

#include <memory>

#include <corvane/engine.h>

namespace corvane::handles {

/// Gives an object back by the function of that type.
template <auto Release>
struct Releaser {
    template <class Object>
    void operator()(Object* object) const {
        Release(object);
    }
};

/// Owners of an object, empty if the call that was to make it failed.
using Importer = std::unique_ptr<corvane_importer, Releaser<corvane_importer_release>>;
using Clip = std::unique_ptr<corvane_clip, Releaser<corvane_clip_release>>;
using Frame = std::unique_ptr<corvane_frame, Releaser<corvane_frame_release>>;

/// A structure to be filled.
template <class Structure>
Structure Empty() {
    Structure structure{};
    structure.struct_size = sizeof structure;
    return structure;
}

} // namespace corvane::handles
