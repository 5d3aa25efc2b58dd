#include "GuardedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include "Engine/Failure.h"

namespace corvane {

namespace {

std::size_t PageSize() {
    return static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace

GuardedMemory::GuardedMemory(std::size_t size) : mSize((size + PageSize() - 1) / PageSize() * PageSize()) {
    void* const pages =
        ::mmap(nullptr, mSize + 2 * PageSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw Failure("The system has no memory for a record.");
    mPages = static_cast<std::byte*>(pages);
    Allow(PROT_READ | PROT_WRITE);
}

GuardedMemory::~GuardedMemory() {
    ::munmap(mPages, mSize + 2 * PageSize());
}

void GuardedMemory::Allow(int access) {
    if (::mprotect(mPages + PageSize(), mSize, access) != 0)
        throw Failure("The system has no memory for a record.");
}

std::byte* GuardedMemory::Place(std::size_t size, bool atEnd) {
    if (mProtected) Allow(PROT_READ | PROT_WRITE);
    mProtected = false;
    return mPages + PageSize() + (atEnd ? mSize - size : 0);
}

void GuardedMemory::Protect() {
    Allow(PROT_READ);
    mProtected = true;
}

} // namespace corvane
