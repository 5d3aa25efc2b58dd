#include "PictureFiles.h"

#include "NumberedName.h"

namespace corvane {

PictureFiles::PictureFiles(const std::filesystem::path& path) : mPath(path) {
    if (const auto names = NumberedName::Parse(path)) mSeries.emplace(*names);
}

void PictureFiles::Write(std::int64_t index, std::span<const std::byte> bytes) {
    if (mSeries)
        mSeries->Write(index, bytes);
    else
        mFile.emplace(mPath).Write(bytes);
    mWritten += bytes.size();
}

std::vector<std::filesystem::path> PictureFiles::WorkingPaths() const {
    return mSeries ? mSeries->WorkingPaths() : std::vector{mFile->WorkingPath()};
}

std::string PictureFiles::Commit() {
    return mSeries ? mSeries->Commit() : mFile->Commit();
}

} // namespace corvane
