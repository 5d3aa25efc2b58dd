#include "Engine/LoadedModule.h"
#include "Video.h"

namespace corvane {

std::unique_ptr<Video> OpenVideo(const std::filesystem::path& path, const std::atomic<bool>* cancel) {
    const LoadedModule module{"corvane-libav", "reading video", "install it and its libraries"};
    void* const function = FindInModule(module, kOpenLibavVideoName);
    return std::unique_ptr<Video>(reinterpret_cast<OpenLibavVideoFunction*>(function)(path, cancel));
}

} // namespace corvane
