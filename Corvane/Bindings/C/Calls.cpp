#include "Calls.h"

#include <exception>
#include <new>

#include "Services/Foundation/QuotedText.h"
#include "corvane/engine.h"

namespace corvane::bindings {

namespace {

thread_local std::string tLastError;

} // namespace

void SetLastError(const char* sentence) noexcept {
    try {
        // Names of files may hold any bytes.
        tLastError = Quoted(sentence);
    } catch (const std::bad_alloc&) {
        tLastError.clear();
    }
}

void KeepException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        SetLastError("There is not enough memory.");
    } catch (const NoObject& error) {
        if (tLastError.empty()) SetLastError(error.what());
    } catch (const std::exception& error) {
        SetLastError(error.what());
    } catch (...) {
        SetLastError("Something unknown went wrong.");
    }
}

} // namespace corvane::bindings

unsigned corvane_engine_version(void) {
    return CORVANE_ENGINE_VERSION;
}

const char* corvane_last_error(void) {
    return corvane::bindings::tLastError.c_str();
}
