#include "Bundle.h"

#include <cstdlib>
#include <stdexcept>

#include <dlfcn.h>
#include <fmt/format.h>

#include "Failure.h"
#include "Services/AlertSink.h"
#include "Services/Suites.h"

namespace corvane {

namespace {

constexpr char kBundleName[] = "ImporterSynthex.bundle";

#if defined(__SANITIZE_ADDRESS__)
// The leak sanitizer reports at the end of the process and needs the bundle's symbols then.
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;
#else
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL;
#endif

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

Bundle::Bundle(const std::filesystem::path& path) : mPath(path) {
    if (!std::filesystem::is_directory(path))
        throw Failure(fmt::format("{}: there is no bundle here; name one with --bundle or SYNTHEX_BUNDLE.",
                                  path.string()));
    try {
        mRegistration = std::make_unique<BundleRegistration>(path);
    } catch (const std::runtime_error& error) {
        throw Failure(fmt::format("{}: this is no plug-in bundle ({}).", path.string(), error.what()));
    }
    const auto executable = std::filesystem::absolute(path) / "Contents" / "Linux" / mRegistration->Executable();
    mLibrary = ::dlopen(executable.c_str(), kLoadFlags);
    if (mLibrary == nullptr)
        throw Failure(fmt::format("{}: the bundle does not load ({}).", path.string(), ::dlerror()));
    mEntry = reinterpret_cast<CvImportEntry>(::dlsym(mLibrary, kCvImportEntryName));

    imImportInfoRec record{};
    const std::int32_t result = mEntry == nullptr ? 0 : Call(kSelector_Init, &record, nullptr).result;
    if (result == kResult_Initialized) return;
    ::dlclose(mLibrary);
    throw Failure(mEntry == nullptr
                      ? fmt::format("{}: the bundle has no {}.", path.string(), kCvImportEntryName)
                      : fmt::format("{}: the plug-in does not initialise (result {}).", path.string(), result));
}

Bundle::~Bundle() {
    Call(kSelector_Shutdown, nullptr, nullptr);
    ::dlclose(mLibrary);
}

Answer Bundle::Call(std::int32_t selector, void* param1, void* param2) const {
    AlertCollector alerts;
    const std::int32_t result = mEntry(selector, StandardParameters(), param1, param2);
    return {result, alerts.Text()};
}

Answer Bundle::CallForFrame(imSourceVideoRec& record) const {
    std::unique_lock<std::mutex> first;
    if (!mHadFrame.load(std::memory_order_acquire)) first = std::unique_lock(mFirstFrame);
    const Answer answer = Call(kSelector_GetSourceVideo, nullptr, &record);
    mHadFrame.store(true, std::memory_order_release);
    return answer;
}

} // namespace corvane
