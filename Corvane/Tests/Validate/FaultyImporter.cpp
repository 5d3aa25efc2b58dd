// The real importer with one fault, for the tests of the checks. The environment's SYNTHEX_FAULT names the
// fault: one of the table below, "SELECTOR succeeds", or "SELECTOR spoils byte OFFSET of PARAMETER".
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "CvPluginAPI.h"
#include "Services/Frames/FrameBuffers.h"

namespace {

/// One call of the entry point.
struct Call {
    std::int32_t selector;
    imStdParms* stdParms;
    void* param1;
    void* param2;

    std::int32_t Real() const {
        static void* const library = ::dlopen(REAL_IMPORTER, RTLD_NOW | RTLD_LOCAL);
        static const auto entry = reinterpret_cast<CvImportEntry>(::dlsym(library, kCvImportEntryName));
        return entry(selector, stdParms, param1, param2);
    }
};

/// Writes one byte of a record that differs from what is there.
void Spoil(void* record, std::ptrdiff_t at) {
    auto* const bytes = static_cast<unsigned char*>(record);
    bytes[at] = static_cast<unsigned char>(~bytes[at]);
}

/// The pixels of the frame that was made for `call`; null if none was.
char* PixelsOf(const Call& call) {
    CvVexelHandle* const frame = static_cast<imSourceVideoRec*>(call.param2)->mFrame;
    char* pixels = nullptr;
    corvane::VexelSuite()->GetPixels(*frame, kCvVexelAccess_ReadWrite, &pixels);
    return pixels;
}

using Fault = std::int32_t (*)(const Call& call);

std::int32_t Hang(const Call&) {
    // Out of the group that is ended with this process.
    ::setpgid(0, ::getpgid(::getppid()));
    for (;;) ::pause();
}

std::int32_t Forge(const Call&) {
    for (int i = 0; i < 30; ++i) ::dprintf(3, "made \n made \n0 made \n");
    ::_exit(0);
}

std::int32_t WriteForEver(const Call&) {
    static const std::vector<char> bytes(1 << 20, 'x');
    for (;;) [[maybe_unused]] const ssize_t written = ::write(3, bytes.data(), bytes.size());
}

/// Leaves a process in a session of its own, whose number goes into the file that the environment names.
std::int32_t LeaveAProcess(const Call& call) {
    ::unsetenv("SYNTHEX_FAULT"); // once is enough
    if (const pid_t child = ::fork(); child != 0) {
        ::waitpid(child, nullptr, 0); // until the number is in the file
        return call.Real();
    }
    ::setsid();
    if (const pid_t left = ::fork(); left != 0) {
        std::ofstream(std::getenv("SYNTHEX_LEFT")) << left;
        ::_exit(0);
    }
    return Hang(call);
}

std::int32_t LoseAFrame(const Call& call) {
    CvVexelHandle* const frame = static_cast<imSourceVideoRec*>(call.param2)->mFrame;
    const std::int32_t result = call.Real();
    *frame = nullptr;
    return result == kResult_Success ? call.Real() : result;
}

std::int32_t CountInAPixel(const Call& call) {
    static unsigned char calls = 0;
    const std::int32_t result = call.Real();
    if (char* const pixels = PixelsOf(call)) pixels[0] = static_cast<char>(++calls);
    return result;
}

std::int32_t KeepMemory(const Call& call) {
    static void* kept = nullptr;
    void** const block = static_cast<void**>(std::malloc(64));
    *block = std::exchange(kept, block);
    return call.Real();
}

std::int32_t KeepAFileOpen(const Call& call) {
    return ::dup(STDERR_FILENO) < 0 ? kResult_Unsupported : call.Real();
}

std::int32_t AnswerSuccess(const Call& call) {
    call.Real();
    return kResult_Success;
}

std::int32_t KeepAMissingFile(const Call& call) {
    const std::int32_t result = call.Real();
    if (result == kResult_FileUnreadable)
        std::memset(&static_cast<imFileOpenRec8*>(call.param2)->mPrivateData, 1, 8);
    return result;
}

std::int32_t PrefsNotTerminated(const Call& call) {
    const std::int32_t result = call.Real();
    if (char* const prefs = static_cast<imGetPrefsRec*>(call.param2)->mPrefs)
        std::memset(prefs + std::strlen(prefs), ' ',
                    static_cast<std::size_t>(kPrefsBufferSize) - std::strlen(prefs));
    return result;
}

struct FaultRow {
    std::string_view name;
    std::int32_t selector;
    Fault fault;
};

constexpr FaultRow kFaults[] = {
    {"a missing file is kept", kSelector_OpenFile8, KeepAMissingFile},
    {"preferences are not terminated", kSelector_GetPrefs, PrefsNotTerminated},
    {"a frame is lost", kSelector_GetSourceVideo, LoseAFrame},
    {"frames differ", kSelector_GetSourceVideo, CountInAPixel},
    {"memory is lost", kSelector_OpenFile8, KeepMemory},
    {"files stay open", kSelector_Init, KeepAFileOpen},
    {"shutdown fails", kSelector_Shutdown, [](const Call& call) { return call.Real() + 1; }},
    {"opening hangs", kSelector_OpenFile8, Hang},
    {"reports are forged", kSelector_Init, Forge},
    {"reports have no end", kSelector_Init, WriteForEver},
    {"a process is left", kSelector_Init, LeaveAProcess},
    {"the preferred size crashes", kSelector_PreferredFrameSize,
     [](const Call&) -> std::int32_t { std::abort(); }},
    {"information exits", kSelector_GetInfo8, [](const Call&) -> std::int32_t { ::_exit(0); }},
};

} // namespace

extern "C" [[gnu::visibility("default")]] std::int32_t
xImportEntry(std::int32_t selector, imStdParms* stdParms, void* param1, void* param2) {
    const Call call{selector, stdParms, param1, param2};
    const char* const variable = std::getenv("SYNTHEX_FAULT");
    const char* const name = variable == nullptr ? "" : variable;
    for (const FaultRow& row : kFaults)
        if (name == row.name && row.selector == selector) return row.fault(call);
    int spoilt = 0, at = 0, param = 0;
    const int found = std::sscanf(name, "%d spoils byte %d of %d", &spoilt, &at, &param);
    if (found < 1 || spoilt != selector) return call.Real();
    if (found == 1) return AnswerSuccess(call);
    const std::int32_t result = call.Real();
    Spoil(param == 1 ? param1 : param2, at);
    return result;
}
