/// The host's foundation library: strings, results, modules, files, memory, counted interfaces, alerts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform.h"

namespace Mosk {

/// A status: 0 or positive is success, negative is failure.
using Result = std::int32_t;

inline constexpr Result kResult_OK = 0;            ///< done
inline constexpr Result kResult_Failed = -1;       ///< any failure that has no value of its own
inline constexpr Result kResult_NotFound = -2;     ///< no such file or folder
inline constexpr Result kResult_AccessDenied = -3; ///< permission, or a read-only place
inline constexpr Result kResult_NotAFile = -4;     ///< a folder, pipe or device instead of a regular file
inline constexpr Result kResult_TooLarge = -5;     ///< the file is over `File::kSizeLimit`
inline constexpr Result kResult_DiskFull = -6;     ///< no room, or a quota or size limit is reached

/// The interface asked for is not one that the object has.
inline constexpr Result kResult_NoInterface = static_cast<Result>(0xA00A0001);

// Strings.

/// Text for people and file paths: UTF-16, value semantics.
using String = std::u16string;

/// UTF-8 to UTF-16. Invalid text throws `std::invalid_argument`. Any thread.
String FromUTF8(std::string_view text);

/// UTF-16 to UTF-8. Invalid text (lone surrogates) throws `std::invalid_argument`. Any thread.
std::string ToUTF8(std::u16string_view text);

// Memory and modules.

/// The foundation's small-block memory. Any thread.
class Allocator {
  public:
    /// Returns `size` bytes; throws `std::bad_alloc`.
    static void* Allocate(std::size_t size);
    /// Gives back a block of `size` bytes.
    static void Dispose(void* block, std::size_t size) noexcept;
};

/// A source of named resources; here only a base to hand on.
class ResourceCollection {
  public:
    virtual ~ResourceCollection() = default;
};

/// A counter that is changed only atomically. Made with `Allocator`.
using AtomicValue = volatile std::int32_t;

/// A shared object as two plain pointers: the counter of its owners, and the object. Both null when empty.
///
/// The holder that counts down to zero destroys the object and then gives the counter's memory back.
template <class T, class Counter>
struct ObjectPtr {
    Counter* mCounter = nullptr;
    T* mObject = nullptr;

    constexpr ObjectPtr() = default;
    ObjectPtr(const ObjectPtr&) = delete;
    ObjectPtr& operator=(const ObjectPtr&) = delete;
    ~ObjectPtr() { Reset(); }

    /// Gives up this holder's share and leaves the pair empty. Never throws: an exception from the object's
    /// destructor ends the process.
    void Reset() noexcept {
        Counter* const counter = std::exchange(mCounter, nullptr);
        T* const object = std::exchange(mObject, nullptr);
        if (counter == nullptr || OSAtomicAdd32Barrier(-1, counter) != 0) return;
        delete object;
        Allocator::Dispose(const_cast<std::int32_t*>(counter), sizeof(std::int32_t));
    }
};

/// A loaded bundle as a source of resources.
class Module : public ResourceCollection {
  public:
    /// Makes a module of `bundle` and stores it in `module` with a count of 1; what `module` held before is
    /// released. Throws `std::bad_alloc`, and leaves `module` as it was then.
    static void Create(CFBundleRef bundle, ObjectPtr<Module, AtomicValue>& module);

    /// The bundle it was made of. Any thread.
    CFBundleRef GetBundle() const { return mBundle; }

  private:
    explicit Module(CFBundleRef bundle) : mBundle(bundle) {}

    CFBundleRef mBundle;
};

// Files.

/// What a file is opened for. `Open` always reads and `Create` always writes.
enum class FileAccessFlags : std::uint32_t { kRead = 1, kWrite = 2, kReadWrite = 3 };
/// What others may do with the file meanwhile. This host keeps nobody out.
enum class FileShareModeFlags : std::uint32_t { kShareRead = 1, kShareWrite = 2, kShareReadWrite = 3 };
/// What `File::Create` does with a file that exists.
enum class FileCreateDispositionFlags : std::uint32_t { kFailIfExists = 1, kReplace = 2 };
/// Attributes of a new file; there are no others.
enum class FileAttributesFlags : std::uint32_t { kNormal = 1 };

/// One open file. Not copyable; the destructor closes it. Every function answers with a negative result if it
/// can't do what it says. One thread at a time.
class File {
  public:
    /// The largest file that `Open` takes, in bytes. Its users read files whole, so this bounds their memory.
    static constexpr std::uint64_t kSizeLimit = 1u << 20;

    /// Nothing is open.
    File();
    /// Closes the file, as `Close` does.
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Opens an existing regular file for reading. Anything else (a folder, a FIFO, a device) fails with
    /// `kResult_NotAFile` at once, so that no path can make the host wait; larger than `kSizeLimit` fails
    /// with `kResult_TooLarge`, one that is not there with `kResult_NotFound`, one that may not be read with
    /// `kResult_AccessDenied`.
    Result Open(const String& path, FileAccessFlags access);

    /// Prepares to replace the text of the file at `path`, or to create it.
    ///
    /// Nothing at `path` changes until `Write`: the text goes to a temporary file beside the target, and
    /// takes the target's place only when it is on disk whole. The target's permissions are kept; of a
    /// symbolic link the file it points to is replaced. A target that is read-only fails with
    /// `kResult_AccessDenied`, and so does one in a folder in which no file can be made; a target that is no
    /// regular file fails with `kResult_NotAFile`, a missing folder with `kResult_NotFound`, and a file that
    /// exists, if `disposition` wants none, with `kResult_Failed`. During a request for preferences all but
    /// the last are told by `Write`: the host keeps the text, so that it is not lost.
    Result Create(const String& path, FileAccessFlags access, FileShareModeFlags share,
                  FileCreateDispositionFlags disposition, FileAttributesFlags attributes, bool temporary);

    /// The size in bytes of the file when it was opened; 0 if none is open for reading.
    std::uint64_t SizeOnDisk() const;

    /// Reads on, up to `size` bytes, and stores how many came: fewer only at the end of the file. Fails if no
    /// file is open for reading, or if the system can't read.
    Result Read(void* buffer, std::uint32_t size, std::uint32_t& bytesRead);

    /// Writes the whole text of a created file in one call and puts it in the target's place. A failure (disk
    /// full, quota) leaves the target as it was and stores 0 bytes written.
    Result Write(const void* bytes, std::uint32_t size, std::uint32_t& bytesWritten);

    /// Closes the file; of a created file that was not written, nothing remains.
    void Close() noexcept;

  private:
    struct State; // the host's
    std::unique_ptr<State> mState;
};

/// Questions about paths. Any thread.
class PathUtils {
  public:
    /// Whether `path` names an existing regular file (a symbolic link to one counts).
    static bool ExistsOnDisk(const String& path);
    /// The part after the last slash; all of a path without one.
    static String GetFilePart(const String& path);
};

// Counted interfaces.

/// The base of all interfaces: counted references and lookup of further interfaces. The order of the
/// operations is the binary interface.
class MoskUnknown {
  public:
    /// Adds a reference and returns the new count. Atomic, any thread.
    virtual std::int32_t AddRef() noexcept = 0;
    /// Drops a reference; the last one deletes the object. The returned count is of no use to callers. Any
    /// thread.
    virtual std::int32_t Release() noexcept = 0;
    virtual ~MoskUnknown() = default;
    /// Stores the address of the interface that `identifier` names and returns 0; stores null and returns
    /// `kResult_NoInterface` if the object has none such. Adds no reference.
    virtual Result QueryMap(const CFUUIDBytes& identifier, void** out) = 0;
    /// This object as its base interface; never null. Adds no reference.
    virtual MoskUnknown* GetMoskUnknown() = 0;
};

/// An empty interface reference was used.
class NullInterfaceException : public std::exception {
  public:
    const char* what() const noexcept override { return "An empty interface reference was used."; }
};

/// An owning reference to an interface: one count, taken on copy and given up on destruction.
template <class T>
class InterfaceRef {
  public:
    InterfaceRef() = default;
    /// Takes its own reference to `object`, which may be null.
    explicit InterfaceRef(T* object) : mObject(object) {
        if (mObject) mObject->AddRef();
    }
    InterfaceRef(const InterfaceRef& other) : InterfaceRef(other.mObject) {}
    InterfaceRef(InterfaceRef&& other) noexcept : mObject(std::exchange(other.mObject, nullptr)) {}
    InterfaceRef& operator=(InterfaceRef other) noexcept {
        std::swap(mObject, other.mObject);
        return *this;
    }
    ~InterfaceRef() {
        if (mObject) mObject->Release();
    }

    explicit operator bool() const { return mObject != nullptr; }
    /// The object, still owned by this reference; null if empty.
    T* Get() const { return mObject; }
    /// Throws `NullInterfaceException` if the reference is empty.
    T* operator->() const {
        if (!mObject) throw NullInterfaceException();
        return mObject;
    }

  private:
    T* mObject = nullptr;
};

/// A reference to any interface.
using MoskUnknownRef = InterfaceRef<MoskUnknown>;

/// Looks the interface `T` up in an object; empty if `unknown` is empty or the object does not have it.
/// The identifier is found by the overload `GuidOf(T*)`.
template <class T>
InterfaceRef<T> QueryInterface(const MoskUnknownRef& unknown) {
    void* found = nullptr;
    if (!unknown || unknown->QueryMap(GuidOf(static_cast<T*>(nullptr)), &found) < 0) return {};
    return InterfaceRef<T>(static_cast<T*>(found));
}

// Alerts.

/// Tells the person that the exception being handled was not handled by the plug-in.
///
/// `disabled` is the reporter's own flag: the host may set it, and the reporter then stays silent from there
/// on. Returns true if the exception is to be thrown again, for a debugger's sake. Any thread.
bool ThrowAfterUnhandledExceptionAlert(bool& disabled, const std::string& message);

} // namespace Mosk
