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
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

enum Kind { kOpen, kRead, kWrite, kSync, kName, kSeek, kSize, kStat, kMemory, kKinds };
constexpr std::array<const char*, kKinds> kNames = {"open", "read", "write", "sync",  "name",
                                                    "seek", "size", "stat",  "memory"};
constexpr int kHalf = -1, kKill = -2;

std::array<std::atomic<long>, kKinds> gCounts;
std::atomic<bool> gCounting = false;
thread_local bool tLoading = false;
int gKind = kKinds, gHow = 0, gMore = 0;
long gNumber = 0;
int (*gMain)(int, char**, char**) = nullptr;

/// How this call is to fail; 0 if it is not.
int HowToFail(Kind kind) {
    if (!gCounting || tLoading) return 0;
    const long number = ++gCounts[kind];
    if (kind != gKind || number < gNumber || (number > gNumber && gMore == 0)) return 0;
    if (gHow == kKill) ::raise(SIGKILL);
    return gHow;
}

/// Makes a system call unless it is to fail.
template <class... Arguments>
long Call(Kind kind, long number, Arguments... arguments) {
    if (const int how = HowToFail(kind); how > 0) {
        errno = how;
        return -1;
    }
    return ::syscall(number, arguments...);
}

/// One that handles `size` bytes of a file.
template <class... Arguments>
ssize_t Transfer(Kind kind, long number, int file, void* bytes, std::size_t size, Arguments... rest) {
    if (file <= STDERR_FILENO) return ::syscall(number, file, bytes, size, rest...);
    const int how = HowToFail(kind);
    errno = how;
    if (how > 0) return -1;
    // What goes past the page cache goes in blocks.
    if (how == kHalf && size > 1) size = size < 8192 ? size / 2 : size / 2 / 4096 * 4096;
    return ::syscall(number, file, bytes, size, rest...);
}

int StartCounting(int count, char** arguments, char** environment) {
    char kind[16] = "";
    if (const char* const fault = std::getenv("SYNTHEX_FAULT"))
        std::sscanf(fault, "%15s %ld %d %d", kind, &gNumber, &gHow, &gMore);
    for (gKind = 0; gKind < kKinds && std::string_view(kNames[static_cast<std::size_t>(gKind)]) != kind;)
        ++gKind;
    gCounting = true;
    return gMain(count, arguments, environment);
}

__attribute__((destructor)) void TellCounts() {
    gCounting = false;
    const char* const path = std::getenv("SYNTHEX_FAULT_COUNTS");
    FILE* const file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (file == nullptr) return;
    for (std::size_t kind = 0; kind < kKinds; ++kind)
        std::fprintf(file, "%s %ld\n", kNames[kind], gCounts[kind].load());
    std::fclose(file);
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

int __libc_start_main(int (*main)(int, char**, char**), int count, char** arguments, void (*begin)(),
                      void (*end)(), void (*loaderEnd)(), void* stack) {
    gMain = main;
    const auto next = reinterpret_cast<decltype(&__libc_start_main)>(::dlsym(RTLD_NEXT, __func__));
    return next(StartCounting, count, arguments, begin, end, loaderEnd, stack);
}

void* dlopen(const char* path, int flags) noexcept {
    const auto next = reinterpret_cast<decltype(&dlopen)>(::dlsym(RTLD_NEXT, __func__));
    tLoading = true;
    void* const library = next(path, flags);
    tLoading = false;
    return library;
}

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = va_arg(more, mode_t);
    va_end(more);
    return static_cast<int>(Call(kOpen, SYS_openat, AT_FDCWD, path, flags, mode));
}
int open64(const char* path, int flags, ...) __attribute__((alias("open")));

ssize_t read(int file, void* bytes, std::size_t size) {
    return Transfer(kRead, SYS_read, file, bytes, size);
}
ssize_t write(int file, const void* bytes, std::size_t size) {
    return Transfer(kWrite, SYS_write, file, const_cast<void*>(bytes), size);
}
ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t offset) {
    return Transfer(kWrite, SYS_pwrite64, file, const_cast<void*>(bytes), size, offset);
}
int fsync(int file) {
    return static_cast<int>(Call(kSync, SYS_fsync, file));
}
int rename(const char* from, const char* to) noexcept {
    return static_cast<int>(Call(kName, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return static_cast<int>(Call(kName, SYS_linkat, fromFolder, from, toFolder, to, flags));
}
off_t lseek(int file, off_t offset, int whence) noexcept {
    return Call(kSeek, SYS_lseek, file, offset, whence);
}
off_t lseek64(int file, off_t offset, int whence) noexcept __attribute__((alias("lseek")));
int ftruncate(int file, off_t size) noexcept {
    return static_cast<int>(Call(kSize, SYS_ftruncate, file, size));
}
int fallocate(int file, int mode, off_t offset, off_t size) {
    return static_cast<int>(Call(kSize, SYS_fallocate, file, mode, offset, size));
}
int stat(const char* path, struct stat* status) noexcept {
    return static_cast<int>(Call(kStat, SYS_newfstatat, AT_FDCWD, path, status, 0));
}
int lstat(const char* path, struct stat* status) noexcept {
    return static_cast<int>(Call(kStat, SYS_newfstatat, AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW));
}
int fstat(int file, struct stat* status) noexcept {
    return static_cast<int>(Call(kStat, SYS_fstat, file, status));
}

// A sanitizer has an allocator of its own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_realloc(block, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return HowToFail(kMemory) != 0 ? (errno = ENOMEM, nullptr) : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    void* const made = aligned_alloc(alignment, size);
    if (made == nullptr) return ENOMEM;
    *block = made;
    return 0;
}
#endif

} // extern "C"
#pragma GCC visibility pop
