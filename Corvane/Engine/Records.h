#pragma once

#include <cstring>

namespace corvane {

/// What the bytes of a record hold before the host sets the fields that a request defines: a value that no
/// plug-in can take for a sensible one, so that reading a field the host did not set shows.
inline constexpr unsigned char kUndefinedByte = 0xCD;

/// A fresh record, as the host hands it to a plug-in.
template <class Record>
Record HostRecord() {
    Record record;
    std::memset(&record, kUndefinedByte, sizeof record);
    return record;
}

} // namespace corvane
