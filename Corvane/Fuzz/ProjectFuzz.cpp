// Sought: a text that crashes instead of being refused, or a project that comes back different.
#include "Engine/Failure.h"
#include "Engine/ProjectFile.h"
#include "Require.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
    const auto read = [](const std::string& text) { return corvane::ReadProject(text, "it", "/a/b"); };
    const corvane::Project project = read({reinterpret_cast<const char*>(data), size});
    Require(read(corvane::WriteProject(project, "/a/b")).HoldsSameAs(project));
    return 0;
} catch (const corvane::Failure&) {
    return 0;
}
