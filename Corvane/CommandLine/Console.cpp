#include "Console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <new>
#include <string>

#include <sys/uio.h>
#include <unistd.h>

#include "Services/Foundation/QuotedText.h"

namespace corvane::commandline {

void Print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view text) {
    Print(Quoted(text) + "\n");
}

void PrintError(std::string_view message) {
    // One write, so that lines of several processes don't mix, and no memory if memory is what is short.
    std::string quoted;
    try {
        message = quoted = Quoted(message);
    } catch (const std::bad_alloc&) {
    }
    const auto part = [](std::string_view text) {
        return iovec{const_cast<char*>(text.data()), text.size()};
    };
    const iovec line[] = {part("synthex: "), part(message), part(message.ends_with('.') ? "\n" : ".\n")};
    [[maybe_unused]] const ssize_t written = ::writev(STDERR_FILENO, line, std::size(line));
}

bool FlushOutput() {
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    PrintError("standard output: it can't be written (" + std::string(std::strerror(errno)) +
               "); send it elsewhere or make room");
    return false;
}

} // namespace corvane::commandline
