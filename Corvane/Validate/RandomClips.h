/// Random settings, and the texts and files that hold them. Not for others than the checks.
#pragma once

#include <cstdint>
#include <iterator>
#include <optional>
#include <random>
#include <string>

#include "ChecksShared.h"

namespace corvane {

/// Random choices: the same ones for the same seed. Nothing here fails.
class Random {
  public:
    explicit Random(std::uint64_t seed) : mEngine(seed) {}

    std::uint64_t Bits() { return mEngine(); }
    /// A number from 0 to `count` - 1.
    std::size_t Below(std::size_t count) { return mEngine() % count; }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    template <class Values>
    const auto& Of(const Values& values) {
        return std::data(values)[Below(std::size(values))];
    }

  private:
    std::mt19937_64 mEngine;
};

/// Bytes that a plug-in gets to read as settings.
struct SettingsBytes {
    std::string bytes;
    std::optional<ClipSettings> settings; ///< what they say; nothing if they are to be refused
};

/// Settings of any kind, impossible ones included: sizes without pixels and over the limits, formats that
/// there are not, no rate and no duration. Durations are whole frames, so that a dialog leaves them as they
/// are unless they are not above 0.
ClipSettings RandomSettings(Random& random);

/// Settings as a text, or a text that is to be refused. Of a file there may be more bytes, behind a zero
/// byte.
SettingsBytes RandomBytes(Random& random);

} // namespace corvane
