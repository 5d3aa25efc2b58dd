#pragma once

namespace corvane {

/// Sees to it that descriptors 0 to 2 are taken, in a program that was started with some of them closed: else
/// the next file that it opens would get such a number, and what is printed would end up in that file. Using
/// a stream that was closed stays an error.
///
/// To be called first in `main`, while there is one thread. Ends the process with exit status 1 if the system
/// refuses.
void KeepStandardStreamsOpen();

} // namespace corvane
