#include "PluginLibrary.h"

#include <cstring>
#include <limits>
#include <span>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <fmt/format.h>

#include "Failure.h"
#include "Services/Foundation/AlertSink.h"
#include "Services/Foundation/RegularFile.h"
#include "Services/Frames/Suites.h"

namespace corvane {

namespace {

#if defined(__SANITIZE_ADDRESS__)
// The leak sanitizer reports at the end of the process and needs the bundle's symbols then.
constexpr int kKeep = RTLD_NODELETE;
#else
constexpr int kKeep = 0;
#endif

/// Whether what a segment holds is in a file of `size` bytes.
bool Fits(const Elf64_Phdr& segment, std::uint64_t size) {
    return segment.p_type != PT_LOAD ||
           (segment.p_offset <= size && segment.p_filesz <= size - segment.p_offset);
}

/// Throws `FileError` if the file can't be loaded without harm: opening a pipe would wait for ever, and of a
/// file that was cut off the loader maps pages that don't exist. What else may be wrong the loader tells.
void CheckLibrary(const std::filesystem::path& path) {
    RegularFile file(path, std::numeric_limits<std::uint64_t>::max());
    const FileError cut(Mosk::kResult_Failed, "the file was cut off", {});
    Elf64_Ehdr header;
    if (file.Read(std::as_writable_bytes(std::span(&header, 1))) < sizeof header) return;
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) return;
    std::vector<Elf64_Phdr> segments(header.e_phnum);
    file.Seek(header.e_phoff);
    const auto bytes = std::as_writable_bytes(std::span(segments));
    if (file.Read(bytes) < bytes.size()) throw cut;
    for (const Elf64_Phdr& segment : segments)
        if (!Fits(segment, file.Size())) throw cut;
}

} // namespace

PluginLibrary::PluginLibrary(const std::filesystem::path& bundle) {
    std::error_code unknown;
    if (!std::filesystem::is_directory(bundle, unknown))
        throw Failure(fmt::format("{}: there is no bundle here; name one with --bundle or SYNTHEX_BUNDLE.",
                                  bundle.string()));
    try {
        mRegistration = std::make_unique<BundleRegistration>(bundle);
    } catch (const std::runtime_error& error) {
        throw Failure(fmt::format("{}: this is no plug-in bundle ({}).", bundle.string(), error.what()));
    }
    mExecutable = std::filesystem::absolute(bundle) / "Contents" / "Linux" / mRegistration->Executable();
    try {
        CheckLibrary(mExecutable);
    } catch (const FileError& error) {
        throw Failure(fmt::format("{}: the bundle does not load ({}: {}).", bundle.string(),
                                  mExecutable.string(), error.what()));
    }
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
