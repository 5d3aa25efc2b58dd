// Sought: a layout script that crashes instead of being refused.
#include "Require.h"
#include "Services/UI/UILayout.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
    corvane::ParseLayout({reinterpret_cast<const char*>(data), size}, u"it");
    return 0;
} catch (const corvane::LayoutError&) {
    return 0;
}
