#include "Console.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "Services/Foundation/QuotedText.h"

namespace corvane::commandline {

void Print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintLine(std::string_view text) {
    Print(Quoted(text) + "\n");
}

void PrintError(std::string_view message) {
    // One write, so that lines of several processes don't mix.
    std::string line = "synthex: " + Quoted(message);
    if (!line.ends_with('.')) line += '.';
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

bool FlushOutput() {
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    PrintError("standard output: it can't be written (" + std::string(std::strerror(errno)) +
               "); send it elsewhere or make room");
    return false;
}

} // namespace corvane::commandline
