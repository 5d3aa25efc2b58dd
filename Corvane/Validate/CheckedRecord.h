#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "Engine/Records.h"

namespace corvane {

/// A field of a record, for the tables of what a request may write.
struct RecordField {
    const char* name;
    std::size_t offset; ///< bytes from the start of the record
    std::size_t size;   ///< bytes
};

/// The row for the field of that name.
#define CV_RECORD_FIELD(record, field)                                                                       \
    ::corvane::RecordField {                                                                                 \
#field, offsetof(record, field), sizeof(record::field)                                               \
    }

/// Memory that is handed to a plug-in and compared afterwards: a block that holds `kUndefinedByte` except for
/// what the host sets, with as much room before and after it as a plug-in with the wrong layout is likely to
/// write to. Nothing here fails. One thread at a time.
class CheckedMemory {
  public:
    /// A block of `size` bytes, owned by this object.
    explicit CheckedMemory(std::size_t size);

    /// The first byte of the block.
    std::byte* Data() { return mBytes.data() + kMargin; }
    const std::byte* Data() const { return mBytes.data() + kMargin; }

    /// Takes the block as it is now for what it has to be afterwards.
    void Arm() { mBefore = mBytes; }
    /// The bytes outside `allowed` that changed since `Arm`, as a clause ("it touched bytes 40 to 43"); empty
    /// if none did.
    std::string Touched(std::initializer_list<RecordField> allowed = {}) const;

  private:
    static constexpr std::size_t kMargin = 64;

    std::string Describe(std::size_t first, std::size_t last) const;

    std::vector<std::byte> mBytes;
    std::vector<std::byte> mBefore;
};

/// A record in such memory. The host sets its fields through `->`, then calls `Arm` (or lets `Ask` do it).
template <class Record>
class CheckedRecord {
  public:
    CheckedRecord() : mMemory(sizeof(Record)) {}

    Record* operator->() { return Get(); }
    Record* Get() { return reinterpret_cast<Record*>(mMemory.Data()); }
    void Arm() { mMemory.Arm(); }
    std::string Touched(std::initializer_list<RecordField> allowed = {}) const {
        return mMemory.Touched(allowed);
    }

  private:
    static_assert(alignof(Record) == 1, "records are packed");
    CheckedMemory mMemory;
};

} // namespace corvane
