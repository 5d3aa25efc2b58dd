#include "LoomScriptLoader.h"

#include <string>

#include "Platform.h"
#include "lumcore.h"

namespace lumloom {

UI_LoomScriptLoader::UI_LoomScriptLoader(const Mosk::String& layoutName) {
    const auto bundle = CFBundleGetBundleWithIdentifier(PLATFORM_BUNDLE_ID(SYNTHEX_BUNDLE_IDENTIFIER));
    if (bundle) lumcore::utility::GetBinaryFromModule(bundle, layoutName, u"loom", mBytes);
}

bool UI_LoomScriptLoader::GetStream(std::stringstream& stream) const {
    if (mBytes.empty()) return false;
    stream << std::string(reinterpret_cast<const char*>(mBytes.data()), mBytes.size());
    return true;
}

} // namespace lumloom
