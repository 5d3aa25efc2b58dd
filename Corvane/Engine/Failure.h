#pragma once

#include <stdexcept>

namespace corvane {

/// A request that can't be done, as one sentence for the person: it names the file and, if there is one, the
/// remedy. Thrown by the engine and by everything above it; ends as exit status 1.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A wrong request rather than one that failed: an unknown name, a range outside the clip. Ends as exit
/// status 2.
class UsageFailure : public Failure {
  public:
    using Failure::Failure;
};

} // namespace corvane
