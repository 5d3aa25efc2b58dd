#include "AtomicSeries.h"

#include <exception>
#include <utility>

#include <fmt/format.h>

#include "TemporaryNames.h"

namespace corvane {

namespace fs = std::filesystem;

AtomicSeries::AtomicSeries(std::function<fs::path(std::int64_t)> pathOf) : mPathOf(std::move(pathOf)) {}

AtomicSeries::~AtomicSeries() {
    try {
        for (Run& run : mRuns)
            while (run.count > 0) TakeFirst(run); // and drop it
    } catch (const std::exception&) {
        // For want of memory. The rest goes when the program ends.
    }
}

void AtomicSeries::Add(std::int64_t number, AtomicFile file) {
    file.Close();
    if (!file.WhatIsLost().empty() && mLoss.files++ == 0) {
        mLoss.number = number;
        mLoss.clause = file.WhatIsLost();
    }
    ++mCount;
    if (file.mPath != mPathOf(number)) {
        mLinked.emplace(number, std::move(file));
        return;
    }
    const std::uint64_t temporary = TemporaryNames::NumberOf(file.mTemporary);
    Run* const last = mRuns.empty() ? nullptr : &mRuns.back();
    if (last != nullptr && number == last->number + last->count &&
        temporary == last->temporary + static_cast<std::uint64_t>(last->count))
        ++last->count;
    else
        mRuns.push_back({number, temporary, 1});
    file.mTemporary.clear(); // is for the series to remove now
}

// No longer the series' own then.
AtomicFile AtomicSeries::TakeFirst(Run& run) const {
    AtomicFile file = AtomicFile::Resume(mPathOf(run.number), run.temporary);
    ++run.number;
    ++run.temporary;
    --run.count;
    return file;
}

void AtomicSeries::Flush() {
    for (Run run : mRuns)
        for (; run.count > 0; --run.count, ++run.temporary) {
            mReached = run.number++;
            AtomicFile::FlushClosed(AtomicFile::TemporaryOf(mPathOf(mReached), run.temporary));
        }
    for (auto& [number, file] : mLinked) {
        mReached = number;
        file.Flush();
    }
}

void AtomicSeries::Commit() {
    Flush();
    for (Run& run : mRuns)
        while (run.count > 0) {
            mReached = run.number;
            TakeFirst(run).TakeName();
        }
    for (auto& [number, file] : mLinked) {
        mReached = number;
        file.TakeName();
        AtomicFile::SyncFolder(file.mPath);
    }
    if (mCount > 0) AtomicFile::SyncFolder(mPathOf(mReached));
}

std::vector<fs::path> AtomicSeries::WorkingPaths() const {
    std::map<std::int64_t, fs::path> paths;
    for (Run run : mRuns)
        for (; run.count > 0; --run.count, ++run.temporary, ++run.number)
            paths.emplace(run.number, AtomicFile::TemporaryOf(mPathOf(run.number), run.temporary));
    for (const auto& [number, file] : mLinked) paths.emplace(number, file.WorkingPath());
    std::vector<fs::path> ordered;
    for (auto& [number, path] : paths) ordered.push_back(std::move(path));
    return ordered;
}

std::string AtomicSeries::WhatIsLost() const {
    if (mLoss.files == 0 || mCount == 1) return mLoss.clause;
    const std::string more = mLoss.files == 1 ? "" : fmt::format(" and {} more", mLoss.files - 1);
    return fmt::format("{} ({}{})", mLoss.clause, mPathOf(mLoss.number).filename().string(), more);
}

} // namespace corvane
