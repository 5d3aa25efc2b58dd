#include "StandardStreams.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace corvane {

void KeepStandardStreamsOpen() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0) continue;
        // Opened the wrong way round, so that reading from it or writing to it fails as it would have.
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        // The lowest free number is the one that is handed out.
        if (::open("/dev/null", way) != stream) ::_exit(1);
    }
}

} // namespace corvane
