#include "Display.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fmt/format.h>

namespace corvane {

namespace {

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Whether an X server answers. The library is the one that Qt talks to servers with, so it knows the same
/// names and credentials; without it Qt can't either.
bool AnswersX11() {
    void* const library = ::dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return false;
    using Connect = void* (*)(const char* display, int* screen);
    using HasError = int (*)(void* connection);
    using Disconnect = void (*)(void* connection);
    const auto connect = reinterpret_cast<Connect>(::dlsym(library, "xcb_connect"));
    const auto hasError = reinterpret_cast<HasError>(::dlsym(library, "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<Disconnect>(::dlsym(library, "xcb_disconnect"));
    bool answers = false;
    if (connect != nullptr && hasError != nullptr && disconnect != nullptr) {
        void* const connection = connect(nullptr, nullptr);
        answers = hasError(connection) == 0;
        disconnect(connection);
    }
    ::dlclose(library);
    return answers;
}

/// Whether something listens on the compositor's socket.
bool AnswersWayland(const std::string& display) {
    const std::string path = (std::filesystem::path(Environment("XDG_RUNTIME_DIR")) / display)
                                 .string(); // an absolute name stands alone
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    std::memcpy(address.sun_path, path.c_str(), path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) return false;
    const bool answers = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    return answers;
}

} // namespace

std::string WhyNoDisplay() {
    const std::string platform = Environment("QT_QPA_PLATFORM");
    if (!platform.empty() && !platform.starts_with("xcb") && !platform.starts_with("wayland")) return {};
    const std::string x11 = Environment("DISPLAY"), wayland = Environment("WAYLAND_DISPLAY");
    if (x11.empty() && wayland.empty())
        return "there is no display (DISPLAY and WAYLAND_DISPLAY are not set)";
    if (!wayland.empty() && AnswersWayland(wayland)) return {};
    if (!x11.empty() && AnswersX11()) return {};
    return fmt::format("the display {} can't be opened", x11.empty() ? wayland : x11);
}

} // namespace corvane
