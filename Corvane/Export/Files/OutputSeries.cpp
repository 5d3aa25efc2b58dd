#include "OutputSeries.h"

#include <utility>

#include "OutputFile.h"

namespace corvane {

OutputSeries::OutputSeries(NumberedName names)
    : mNames(std::move(names)), mFiles([this](std::int64_t number) { return mNames.For(number); }) {}

void OutputSeries::Write(std::int64_t number, std::span<const std::byte> bytes) {
    OutputFile file(mNames.For(number));
    file.Write(bytes);
    file.MoveTo(mFiles, number);
}

std::vector<std::filesystem::path> OutputSeries::WorkingPaths() const {
    return mFiles.WorkingPaths();
}

std::string OutputSeries::Commit() {
    try {
        mFiles.Commit();
    } catch (const FileError& error) {
        throw WritingFailure(mNames.For(mFiles.Reached()).string(), error);
    }
    return mFiles.WhatIsLost();
}

} // namespace corvane
