#include "lumcore.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>

#include <fmt/format.h>

#include "Bundles.h"
#include "RegularFile.h"

namespace lumcore {

Mosk::String utility::AsciiToUTF16(const char* text) {
    const std::string_view ascii(text);
    Mosk::String result(ascii.size(), u'\0');
    for (std::size_t i = 0; i < ascii.size(); ++i) result[i] = static_cast<unsigned char>(ascii[i]);
    return result;
}

bool utility::GetBinaryFromModule(CFBundleRef bundle, const Mosk::String& name, const Mosk::String& type,
                                  std::vector<std::byte>& bytes) {
    bytes.clear();
    if (bundle == nullptr) return false;
    const std::filesystem::path path =
        bundle->folder / "Contents" / "Resources" / (Mosk::ToUTF8(name) + "." + Mosk::ToUTF8(type));
    std::string text;
    try {
        text = corvane::ReadWholeFile(path, Mosk::File::kSizeLimit);
    } catch (const corvane::FileError&) {
        return false;
    }
    const auto* const first = reinterpret_cast<const std::byte*>(text.data());
    bytes.assign(first, first + text.size());
    return true;
}

std::string config::Error::GetText() const {
    const std::string_view key = what();
    return std::string(key.substr(key.find('=') + 1));
}

void config::ThrowError(int level, const char* key, int module, int number, bool, const Mosk::String&,
                        const Mosk::String&, const Mosk::String&, const Mosk::String&) {
    throw Error(level, key, module, number);
}

config::Localizer& config::Localizer::Get() {
    static Localizer localizer;
    return localizer;
}

bool debug::BreakAfterContractDialog(const char* expression, const char* file, const char* function,
                                     int line) {
    std::fputs(fmt::format("{}:{}: {}: contract failed: {}\n", file, line, function, expression).c_str(),
               stderr);
    return true;
}

bool debug::IsDebuggerAttached() {
    std::ifstream status("/proc/self/status");
    constexpr std::string_view kField = "TracerPid:";
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(kField))
            return line.find_first_not_of(" \t0", kField.size()) != std::string::npos;
    return false;
}

} // namespace lumcore
