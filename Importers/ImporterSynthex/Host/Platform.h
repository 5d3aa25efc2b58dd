/// The few operating-system services that the plug-in uses by their macOS names.
///
/// On macOS these are Apple's own headers. Elsewhere the bench supplies the same names with the same
/// meaning, so that the plug-in's sources are the same on both.
#pragma once

#if defined(__APPLE__)

#include <CoreFoundation/CoreFoundation.h>
#include <libkern/OSAtomic.h>

/// The bundle identifier in the form that `CFBundleGetBundleWithIdentifier` takes.
#define PLATFORM_BUNDLE_ID(literal) CFSTR(literal)

#else

#include <cstdint>

/// A UUID as its 16 bytes, in the order in which the UUID is written.
struct CFUUIDBytes {
    std::uint8_t byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    std::uint8_t byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
};
static_assert(sizeof(CFUUIDBytes) == 16);

/// A bundle the process has loaded: a folder `NAME.bundle/Contents/{Info.plist,Resources/,Linux/}`.
/// Opaque; owned by the platform and valid until the process ends.
struct CFBundle;
using CFBundleRef = const CFBundle*;

/// The bundle identifier in the form that `CFBundleGetBundleWithIdentifier` takes.
#define PLATFORM_BUNDLE_ID(literal) (literal)

/// Finds the loaded bundle whose Info.plist names `identifier` (UTF-8, zero-terminated). Returns null if no
/// loaded bundle has it. Any thread.
CFBundleRef CFBundleGetBundleWithIdentifier(const char* identifier);

/// Adds `amount` to `*value` as one atomic step with a full memory barrier and returns the new value.
/// Any thread; `value` must be 4-byte aligned.
std::int32_t OSAtomicAdd32Barrier(std::int32_t amount, volatile std::int32_t* value);

#endif
