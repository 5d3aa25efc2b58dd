/// Records that a plug-in gets between guard pages. Not for others than the checks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "GuardedMemory.h"
#include "RandomClips.h"

namespace corvane {

/// Bytes that the plug-in gets between guard pages, and what they are to be afterwards. One thread at a time.
class SentBytes {
  public:
    /// `size` bytes in `memory`, which outlives this object and has room for them.
    SentBytes(GuardedMemory& memory, std::size_t size, Random& random)
        : mMemory(memory), mSent(memory.Place(size, random.OneIn(2))), mAfter(size) {}

    /// What the plug-in gets.
    std::byte* Sent() const { return mSent; }
    /// As it is to be afterwards; what it is now, from `Arm` on.
    std::byte* After() { return mAfter.data(); }
    /// The host has set what it sets.
    void Arm() { std::memcpy(mAfter.data(), mSent, mAfter.size()); }
    /// Some are to be written even if none changes.
    void ExpectWrites() { mIsWritten = true; }
    /// Keeps the bytes from being written if none is to change.
    void Protect() {
        if (!mIsWritten && std::memcmp(mAfter.data(), mSent, mAfter.size()) == 0) mMemory.Protect();
    }
    /// Says, as a clause, which byte is not what it is to be; empty if all are.
    std::string Difference() const {
        const auto differs = std::ranges::mismatch(mAfter, std::span(mSent, mAfter.size()));
        if (differs.in1 == mAfter.end()) return {};
        return fmt::format("byte {} of {} is {:#04x} instead of {:#04x}", differs.in1 - mAfter.begin(),
                           mAfter.size(), static_cast<int>(*differs.in2), static_cast<int>(*differs.in1));
    }

  private:
    GuardedMemory& mMemory;
    std::byte* mSent;
    std::vector<std::byte> mAfter;
    bool mIsWritten = false;
};

/// A record in such memory, random at first.
template <class Record>
class Sent : public SentBytes {
  public:
    Sent(GuardedMemory& memory, Random& random) : SentBytes(memory, sizeof(Record), random) {
        for (std::size_t i = 0; i < sizeof(Record); ++i) SentBytes::Sent()[i] = std::byte(random.Bits());
    }
    /// The record that the plug-in gets.
    Record* operator->() { return Get(); }
    Record* Get() { return reinterpret_cast<Record*>(SentBytes::Sent()); }
    /// The record as it is to be afterwards.
    Record& To() { return *reinterpret_cast<Record*>(After()); }
};

} // namespace corvane
