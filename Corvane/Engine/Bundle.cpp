#include "Bundle.h"

#include <cstdlib>
#include <string_view>

#include <fmt/format.h>

#include "Failure.h"
#include "PluginLibrary.h"

namespace corvane {

namespace {

constexpr char kBundleName[] = "ImporterSynthex.bundle";

/// The text without white space at its ends.
std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \n");
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \n") - first + 1);
}

} // namespace

std::string Answer::Reason() const {
    constexpr std::string_view kMarker = "what() returned ";
    const std::size_t marker = alert.find(kMarker);
    return Trimmed(marker == std::string::npos ? alert : alert.substr(marker + kMarker.size()));
}

std::filesystem::path Bundle::Find(const std::filesystem::path& named) {
    if (!named.empty()) return named;
    if (const char* const variable = std::getenv("SYNTHEX_BUNDLE"); variable != nullptr && *variable != '\0')
        return variable;
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path() / "lib" / kBundleName;
}

Bundle::Bundle(const std::filesystem::path& path)
    : mPath(path), mLibrary(std::make_unique<PluginLibrary>(path)) {
    if (!mLibrary->HasEntry())
        throw Failure(fmt::format("{}: the bundle has no {}.", path.string(), kCvImportEntryName));
    imImportInfoRec record{};
    const std::int32_t result = Call(kSelector_Init, &record, nullptr).result;
    if (result != kResult_Initialized)
        throw Failure(fmt::format("{}: the plug-in does not initialize (result {}).", path.string(), result));
}

Bundle::~Bundle() {
    Call(kSelector_Shutdown, nullptr, nullptr);
}

Answer Bundle::Call(std::int32_t selector, void* param1, void* param2) const {
    const std::lock_guard calling(mCalling);
    return mLibrary->Call(selector, param1, param2);
}

Answer Bundle::CallForFrame(imSourceVideoRec& record) const {
    std::unique_lock<std::mutex> first;
    if (!mHadFrame.load(std::memory_order_acquire)) first = std::unique_lock(mFirstFrame);
    const Answer answer = mLibrary->Call(kSelector_GetSourceVideo, nullptr, &record);
    mHadFrame.store(true, std::memory_order_release);
    return answer;
}

} // namespace corvane
