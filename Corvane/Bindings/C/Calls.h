#pragma once

#include <string>

#include <fmt/format.h>

#include "Engine/Failure.h"

namespace corvane::bindings {

/// Keeps what `corvane_last_error` says on this thread. Never fails.
void SetLastError(const char* sentence) noexcept;

/// Sets the last error to what is being thrown: only in a `catch`. Never fails.
void KeepException() noexcept;

/// What `work` returns; if it throws, the last error is set and `failed` is returned.
template <class Result, class Work>
Result Call(Result failed, Work work) noexcept {
    try {
        return work();
    } catch (...) {
        KeepException();
        return failed;
    }
}

/// The object behind a pointer that a caller must not leave NULL. Throws `UsageFailure`, which names the
/// function and the parameter.
template <class Object>
Object& Given(Object* object, const char* function, const char* parameter) {
    if (object == nullptr) throw UsageFailure(fmt::format("{}: {} is NULL.", function, parameter));
    return *object;
}

/// No object was given, probably because the call that was to make it failed: that failure stays the last
/// one.
class NoObject : public UsageFailure {
  public:
    using UsageFailure::UsageFailure;
};

/// The same for a pointer to one of the interface's objects. Throws `NoObject`.
template <class Object>
Object& Opened(Object* object, const char* function, const char* parameter) {
    if (object == nullptr) throw NoObject(fmt::format("{}: {} is NULL.", function, parameter));
    return *object;
}

} // namespace corvane::bindings
