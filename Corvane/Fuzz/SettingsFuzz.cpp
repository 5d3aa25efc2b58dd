// Sought: settings that crash, that the two framings or the bench and the plug-in read differently, or that
// come back changed.
#include <optional>

#include "Engine/SettingsText.h"
#include "Require.h"
#include "SynthexInfo.h"

using namespace lumcore::serialization;

/// What the plug-in writes after reading `size` bytes of the text; nothing if it refuses them.
static std::optional<std::string> WrittenAgain(const std::string& text, std::size_t size) try {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.c_str());
    const SynthexInfo info = Serializer<SynthexInfo>::FromUTF8String(bytes, size);
    return GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(info), false);
} catch (const std::exception&) {
    return std::nullopt;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto written = WrittenAgain(text, size + 1);
    if (text.find('\0') == text.npos) Require(WrittenAgain(text, size) == written);
    const std::string bench = corvane::WriteSettings(corvane::ReadSettings(text));
    if (!written) return 0;
    Require(WrittenAgain(*written, written->size() + 1) == written);
    Require(bench == *written);
    return 0;
}
