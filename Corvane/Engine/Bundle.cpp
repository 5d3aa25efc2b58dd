#include "Bundle.h"

#include <cstdlib>
#include <map>
#include <string_view>
#include <system_error>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <fmt/format.h>

#include "Failure.h"
#include "PluginLibrary.h"
#include "Services/Foundation/LibraryFolder.h"

namespace corvane {

namespace {

constexpr char kBundleName[] = "ImporterSynthex.bundle";

} // namespace

std::string Answer::Reason() const {
    constexpr std::string_view kMarker = "what() returned ";
    const std::size_t marker = alert.find(kMarker);
    return boost::trim_copy_if(marker == std::string::npos ? alert : alert.substr(marker + kMarker.size()),
                               boost::is_any_of(" \n"));
}

std::filesystem::path Bundle::Find(const std::filesystem::path& named) {
    if (!named.empty()) return named;
    if (const char* const variable = std::getenv("SYNTHEX_BUNDLE"); variable != nullptr && *variable != '\0')
        return variable;
    return InLibraryFolder(kBundleName);
}

std::shared_ptr<Bundle> Bundle::Shared(const std::filesystem::path& named) {
    // The plug-in of a process is initialized once, and not again before its shutdown is over.
    static std::mutex sMutex;
    static std::map<std::filesystem::path, std::weak_ptr<Bundle>> sLoaded;
    const std::filesystem::path path = Find(named);
    std::error_code unknown;
    const std::lock_guard lock(sMutex);
    std::weak_ptr<Bundle>& loaded = sLoaded[std::filesystem::weakly_canonical(path, unknown)];
    if (std::shared_ptr<Bundle> bundle = loaded.lock()) return bundle;
    std::shared_ptr<Bundle> bundle(new Bundle(path), [](const Bundle* last) {
        const std::lock_guard unloading(sMutex);
        delete last;
    });
    loaded = bundle;
    return bundle;
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
