#include "Bundles.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <vector>

#include <pugixml.hpp>

#include "NeverDestroyed.h"
#include "RegularFile.h"

namespace corvane {

namespace {

/// A property list larger than this is none of a bundle.
constexpr std::uint64_t kMostBytesOfPlist = 1 << 20;

struct Registry {
    std::mutex mutex;
    std::deque<CFBundle> known;           // never shrinks: references stay valid
    std::vector<const CFBundle*> present; // what can be found now
};

Registry& TheRegistry() {
    // Bundles may still be looked up while static objects are being destroyed.
    static NeverDestroyed<Registry> registry;
    return registry.Get();
}

/// The string that follows the key `name` in the property list's dictionary; empty if there is none.
std::string PropertyString(const pugi::xml_document& plist, const char* name) {
    for (const pugi::xml_node key : plist.child("plist").child("dict").children("key"))
        if (std::strcmp(key.child_value(), name) == 0) return key.next_sibling().child_value();
    return {};
}

} // namespace

BundleRegistration::BundleRegistration(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "Contents" / "Info.plist";
    pugi::xml_document plist;
    try {
        const std::string text = ReadWholeFile(file, kMostBytesOfPlist);
        if (const auto parsed = plist.load_buffer(text.data(), text.size()); !parsed)
            throw std::runtime_error(parsed.description());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
    const std::string identifier = PropertyString(plist, "CFBundleIdentifier");
    mExecutable = PropertyString(plist, "CFBundleExecutable");
    if (identifier.empty() || mExecutable.empty())
        throw std::runtime_error(file.string() + ": CFBundleIdentifier and CFBundleExecutable are needed");

    const std::filesystem::path absolute = std::filesystem::absolute(folder);
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto same = std::ranges::find_if(registry.known, [&](const CFBundle& bundle) {
        return bundle.identifier == identifier && bundle.folder == absolute;
    });
    mBundle =
        same != registry.known.end() ? &*same : &registry.known.emplace_back(CFBundle{identifier, absolute});
    registry.present.push_back(mBundle);
}

BundleRegistration::~BundleRegistration() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.present.erase(std::ranges::find(registry.present, mBundle));
}

} // namespace corvane

CFBundleRef CFBundleGetBundleWithIdentifier(const char* identifier) {
    corvane::Registry& registry = corvane::TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = std::find_if(registry.present.rbegin(), registry.present.rend(),
                                    [&](CFBundleRef bundle) { return bundle->identifier == identifier; });
    return found == registry.present.rend() ? nullptr : *found;
}

std::int32_t OSAtomicAdd32Barrier(std::int32_t amount, volatile std::int32_t* value) {
    return __atomic_add_fetch(value, amount, __ATOMIC_SEQ_CST);
}
