#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace corvane {

/// Holds an object that is made where this one is and never destroyed. For function-local statics that other
/// threads, or the statics of other modules, may still use while the process ends. Takes no memory from the
/// heap.
template <class T>
class NeverDestroyed {
  public:
    /// Makes the object from `arguments`; throws what its constructor throws.
    template <class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments)
        : mObject(std::construct_at(reinterpret_cast<T*>(mPlace), std::forward<Arguments>(arguments)...)) {}
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    /// The object. As safe to use from several threads as the object itself.
    T& Get() { return *mObject; }

  private:
    alignas(T) std::byte mPlace[sizeof(T)];
    T* const mObject;
};

} // namespace corvane
