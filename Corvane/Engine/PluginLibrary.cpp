#include "PluginLibrary.h"

#include <stdexcept>

#include <dlfcn.h>
#include <fmt/format.h>

#include "Failure.h"
#include "Services/Foundation/AlertSink.h"
#include "Services/Frames/Suites.h"

namespace corvane {

namespace {

#if defined(__SANITIZE_ADDRESS__)
// The leak sanitizer reports at the end of the process and needs the bundle's symbols then.
constexpr int kKeep = RTLD_NODELETE;
#else
constexpr int kKeep = 0;
#endif

} // namespace

PluginLibrary::PluginLibrary(const std::filesystem::path& bundle) {
    if (!std::filesystem::is_directory(bundle))
        throw Failure(fmt::format("{}: there is no bundle here; name one with --bundle or SYNTHEX_BUNDLE.",
                                  bundle.string()));
    try {
        mRegistration = std::make_unique<BundleRegistration>(bundle);
    } catch (const std::runtime_error& error) {
        throw Failure(fmt::format("{}: this is no plug-in bundle ({}).", bundle.string(), error.what()));
    }
    mExecutable = std::filesystem::absolute(bundle) / "Contents" / "Linux" / mRegistration->Executable();
    mLibrary = ::dlopen(mExecutable.c_str(), RTLD_NOW | RTLD_LOCAL | kKeep);
    if (mLibrary == nullptr)
        throw Failure(fmt::format("{}: the bundle does not load ({}).", bundle.string(), ::dlerror()));
    mEntry = reinterpret_cast<CvImportEntry>(::dlsym(mLibrary, kCvImportEntryName));
}

PluginLibrary::~PluginLibrary() {
    ::dlclose(mLibrary);
}

Answer PluginLibrary::Call(std::int32_t selector, void* param1, void* param2) const {
    AlertCollector alerts;
    const std::int32_t result = mEntry(selector, StandardParameters(), param1, param2);
    return {result, alerts.Text()};
}

bool PluginLibrary::IsLoaded(const std::filesystem::path& executable) {
    void* const library = ::dlopen(executable.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) ::dlclose(library);
    return library != nullptr;
}

bool PluginLibrary::Unloads() {
    return kKeep == 0;
}

} // namespace corvane
