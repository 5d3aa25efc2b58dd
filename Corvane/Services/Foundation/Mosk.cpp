#include "Mosk.h"

#include <new>
#include <stdexcept>

#include <boost/locale/encoding_utf.hpp>

namespace Mosk {

String FromUTF8(std::string_view text) {
    namespace conv = boost::locale::conv;
    try {
        return conv::utf_to_utf<char16_t>(text.data(), text.data() + text.size(), conv::stop);
    } catch (const conv::conversion_error&) {
        throw std::invalid_argument("The text is not valid UTF-8.");
    }
}

std::string ToUTF8(std::u16string_view text) {
    namespace conv = boost::locale::conv;
    try {
        return conv::utf_to_utf<char>(text.data(), text.data() + text.size(), conv::stop);
    } catch (const conv::conversion_error&) {
        throw std::invalid_argument("The text is not valid UTF-16.");
    }
}

void* Allocator::Allocate(std::size_t size) {
    return ::operator new(size);
}

void Allocator::Dispose(void* block, std::size_t) noexcept {
    ::operator delete(block);
}

void Module::Create(CFBundleRef bundle, ObjectPtr<Module, AtomicValue>& module) {
    auto* const counter = static_cast<std::int32_t*>(Allocator::Allocate(sizeof(std::int32_t)));
    Module* object = nullptr;
    try {
        object = new Module(bundle);
    } catch (...) {
        Allocator::Dispose(counter, sizeof(std::int32_t));
        throw;
    }
    module.Reset();
    *counter = 1;
    module.mCounter = counter;
    module.mObject = object;
}

} // namespace Mosk
