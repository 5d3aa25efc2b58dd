// Preloaded into a program by script/faults: lets the nth system call of a kind fail, or the nth allocation.
//   SYNTHEX_FAULT="KIND N HOW MORE"   HOW is an errno, -1 for half of the bytes, -2 for SIGKILL before the
//   call;
//                                     all calls after the nth fail, too, if MORE is 1
//   SYNTHEX_FAULT_COUNTS=FILE         gets how many calls there were of each kind
// Calls are counted from `main` on; those on the standard streams, which say what went wrong, are left alone,
// and so are those of libraries while they are loaded: nobody could catch what their initialization throws.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

enum Kind : unsigned { kOpen, kRead, kWrite, kSync, kName, kSeek, kSize, kStat, kMemory, kKinds };
constexpr std::array kNames = {"open", "read", "write", "sync", "name", "seek", "size", "stat", "memory"};
constexpr int kHalf = -1, kKill = -2;

std::array<std::atomic<long>, kKinds> gCounts;
std::atomic<bool> gCounting = false;
thread_local bool tLoading = false;
char gKind[16];
int gHow = 0, gMore = 0;
long gNumber = 0;
int (*gMain)(int, char**, char**) = nullptr;

/// How this call is to fail; 0 if it is not.
int HowToFail(Kind kind) {
    if (!gCounting || tLoading) return 0;
    const long number = ++gCounts[kind];
    if (std::string_view(kNames[kind]) != gKind || number < gNumber || (number > gNumber && gMore == 0))
        return 0;
    if (gHow == kKill) ::raise(SIGKILL);
    return gHow;
}

/// Makes a system call unless it is to fail.
long Call(Kind kind, long number, long a, long b, long c, long d, long e) {
    const bool transfers = kind == kRead || kind == kWrite;
    const int how = transfers && a <= STDERR_FILENO ? 0 : HowToFail(kind);
    if (how > 0) return errno = how, -1;
    // What goes past the page cache goes in blocks.
    if (how == kHalf && c > 1) c = c < 8192 ? c / 2 : c / 2 / 4096 * 4096;
    return ::syscall(number, a, b, c, d, e);
}

int StartCounting(int count, char** arguments, char** environment) {
    if (const char* const fault = std::getenv("SYNTHEX_FAULT"))
        std::sscanf(fault, "%15s %ld %d %d", gKind, &gNumber, &gHow, &gMore);
    gCounting = true;
    return gMain(count, arguments, environment);
}

__attribute__((destructor)) void TellCounts() {
    gCounting = false;
    const char* const path = std::getenv("SYNTHEX_FAULT_COUNTS");
    FILE* const file = path != nullptr ? std::fopen(path, "w") : nullptr;
    for (unsigned kind = 0; file != nullptr && kind < kKinds; ++kind)
        std::fprintf(file, "%s %ld\n", kNames[kind], gCounts[kind].load());
    if (file != nullptr) std::fclose(file);
}

template <class Function>
Function Next(Function, const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

#pragma GCC visibility push(default)
// A function of the C library that is a system call with the same arguments.
#define SYNTHEX_SYSTEM_CALL(NAME, KIND, NUMBER)                                                              \
    long Faulty_##NAME(long a, long b, long c, long d, long e) __asm__(#NAME);                               \
    long Faulty_##NAME(long a, long b, long c, long d, long e) {                                             \
        return Call(KIND, NUMBER, a, b, c, d, e);                                                            \
    }

SYNTHEX_SYSTEM_CALL(open, kOpen, SYS_open)
SYNTHEX_SYSTEM_CALL(open64, kOpen, SYS_open)
SYNTHEX_SYSTEM_CALL(read, kRead, SYS_read)
SYNTHEX_SYSTEM_CALL(write, kWrite, SYS_write)
SYNTHEX_SYSTEM_CALL(pwrite, kWrite, SYS_pwrite64)
SYNTHEX_SYSTEM_CALL(fsync, kSync, SYS_fsync)
SYNTHEX_SYSTEM_CALL(rename, kName, SYS_rename)
SYNTHEX_SYSTEM_CALL(linkat, kName, SYS_linkat)
SYNTHEX_SYSTEM_CALL(lseek, kSeek, SYS_lseek)
SYNTHEX_SYSTEM_CALL(lseek64, kSeek, SYS_lseek)
SYNTHEX_SYSTEM_CALL(ftruncate, kSize, SYS_ftruncate)
SYNTHEX_SYSTEM_CALL(fallocate, kSize, SYS_fallocate)
SYNTHEX_SYSTEM_CALL(stat, kStat, SYS_stat)
SYNTHEX_SYSTEM_CALL(lstat, kStat, SYS_lstat)
SYNTHEX_SYSTEM_CALL(fstat, kStat, SYS_fstat)

extern "C" {

int __libc_start_main(int (*main)(int, char**, char**), int count, char** arguments, void (*begin)(),
                      void (*end)(), void (*loaderEnd)(), void* stack) {
    gMain = main;
    return Next(&__libc_start_main, __func__)(StartCounting, count, arguments, begin, end, loaderEnd, stack);
}

void* dlopen(const char* path, int flags) noexcept {
    tLoading = true;
    void* const library = Next(&dlopen, __func__)(path, flags);
    tLoading = false;
    return library;
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* calloc(std::size_t count, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_realloc(block, size);
}
void* malloc(std::size_t size) noexcept {
    return realloc(nullptr, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* const made = aligned_alloc(alignment, size);
    return made == nullptr ? ENOMEM : (*block = made, 0);
}
#endif

} // extern "C"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// A sanitizer has an allocator of its own, which comes next.
void* operator new(std::size_t size) {
    return HowToFail(kMemory) != 0 ? throw std::bad_alloc()
                                   : Next(static_cast<void* (*)(std::size_t)>(nullptr), "_Znwm")(size);
}
#endif
#pragma GCC visibility pop
