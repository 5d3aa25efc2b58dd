#include "BatchTool.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <system_error>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

#include <boost/algorithm/string/trim.hpp>
#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Services/Foundation/ChildProcess.h"

namespace corvane {
namespace {

constexpr std::chrono::seconds kLongest(60); // commands of a batch system answer in less, or not at all

// What a child writes to one of its descriptors.
struct Heard {
    explicit Heard(std::string& text) {
        auto [from, to] = MakePipe();
        output = {std::move(from), [&text](std::string_view bytes) { text += bytes; }};
        writing = std::move(to);
    }

    ChildOutput output;
    FileDescriptor writing;
};

} // namespace

std::string ToolAnswer::Reason() const {
    std::string text = boost::algorithm::trim_copy(errors.empty() ? said : errors);
    text.erase(std::min(text.find('\n'), text.size()));
    // "sbatch: error: ..."
    for (const std::string& start : {program + ": ", std::string("error: ")})
        if (text.starts_with(start)) text.erase(0, start.size());
    return text.empty() ? fmt::format("it ended with status {}", status) : text;
}

ToolAnswer RunTool(const std::vector<std::string>& words) {
    const std::string& program = words.front();
    ToolAnswer answer{.program = program};
    try {
        Heard said(answer.said), errors(answer.errors);
        ChildProcess child(
            {program, words, {{said.writing.Get(), STDOUT_FILENO}, {errors.writing.Get(), STDERR_FILENO}}});
        said.writing.Close();
        errors.writing.Close();
        std::array outputs{std::move(said.output), std::move(errors.output)};
        if (!child.Follow(outputs, ChildProcess::Clock::now() + kLongest))
            throw Failure(fmt::format(
                "{}: it did not answer for {} s; look after the batch system, then run this again", program,
                kLongest.count()));
        const int status = child.End().status;
        answer.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::no_such_file_or_directory)
            throw Failure(fmt::format(
                "{}: there is no such program here; install Slurm's commands (Debian: slurm-client), "
                "run this where they are, or leave out --slurm",
                program));
        throw Failure(fmt::format("{}: it can't be started: {}", program, error.code().message()));
    }
    return answer;
}

} // namespace corvane
