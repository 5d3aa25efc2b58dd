#pragma once

#include <string>

namespace corvane {

/// A part of the program that only some requests need. It is a library of its own, `corvane/NAME.so` beside
/// that of the host services, so that other requests don't wait for what it links.
struct LoadedModule {
    const char* name;
    std::string need;   ///< what needs it: the middle of the sentence "... can't be loaded, which NEED needs"
    std::string remedy; ///< what a person can do without it: the end of that sentence
};

/// The function of that name in a module, which is loaded for it and stays loaded. Throws `Failure` if the
/// module is missing, does not load or has no such function. Any thread.
void* FindInModule(const LoadedModule& module, const char* function);

} // namespace corvane
