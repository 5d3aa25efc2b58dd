// Sought: a bundle's property list that crashes instead of being refused.
#include "Require.h"
#include "Services/Foundation/Bundles.h"
#include "Tests/TestFolder.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
    static const corvane::testing::TestFolder folder;
    std::filesystem::create_directories(folder / "Contents");
    folder.Write("Contents/Info.plist", {reinterpret_cast<const char*>(data), size});
    const corvane::BundleRegistration bundle(folder.Path());
    Require(!bundle.Identifier().empty() && !bundle.Executable().empty());
    return 0;
} catch (const std::runtime_error&) {
    return 0;
}
