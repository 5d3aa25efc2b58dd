#include "Replacing.h"

#include <cstdio>
#include <string>

#include <unistd.h>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/QuotedText.h"

namespace corvane::commandline {

namespace {

/// A person's answer to a question that is on the terminal: whether it is yes. No answer is no.
bool ReadAnswer() {
    std::string answer;
    for (char character = 0; ::read(STDIN_FILENO, &character, 1) == 1 && character != '\n';)
        answer += character;
    return answer == "y" || answer == "Y" || answer == "yes";
}

} // namespace

bool CanAsk() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

void RequireReplaceable(const std::filesystem::path& file, Replacing replacing) {
    if (replacing == Replacing::kYes) return;
    if (replacing == Replacing::kNo)
        throw Failure(fmt::format("{}: the file exists and is kept; use -y instead of -n to replace it.",
                                  file.string()));
    if (!CanAsk()) return;
    const std::string question = fmt::format("{} exists; replace it? [y/N] ", Quoted(file.string()));
    std::fwrite(question.data(), 1, question.size(), stderr);
    if (!ReadAnswer())
        throw Failure(fmt::format("{}: the file is kept; answer y to replace it, or use -y.", file.string()));
}

} // namespace corvane::commandline
