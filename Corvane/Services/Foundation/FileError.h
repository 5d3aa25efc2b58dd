#pragma once

#include <stdexcept>
#include <string>

#include "Mosk.h"

namespace corvane {

/// Why a file can't be read or written. Its text is a clause without a stop and does not name the file, for
/// sentences such as "NAME: TEXT; REMEDY.".
class FileError : public std::runtime_error {
  public:
    /// `why` is the clause, and `remedy` what a person can do.
    FileError(Mosk::Result result, const std::string& why, std::string remedy)
        : std::runtime_error(why), mResult(result), mRemedy(std::move(remedy)) {}

    /// The error for the system's `error` number met while opening or reading a file.
    static FileError OfReading(int error);
    /// The error for the system's `error` number met while writing a file.
    static FileError OfWriting(int error);

    /// The host's result that stands for it; negative.
    Mosk::Result GetResult() const { return mResult; }
    /// What a person can do, as a clause; empty if nothing can be said.
    const std::string& GetRemedy() const { return mRemedy; }

  private:
    Mosk::Result mResult;
    std::string mRemedy;
};

} // namespace corvane
