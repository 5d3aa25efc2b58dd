/// The host's core services: JSON, text, resources, checked casts, contracts and localized errors.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <boost/any.hpp>
#include <boost/shared_ptr.hpp>

#include "Mosk.h"
#include "Platform.h"

namespace lumcore::serialization {

/// A JSON value, by the type it holds: `Object`, `Array`, `UTF8String`, `std::uint64_t` (a non-negative
/// integer), `std::int64_t` (a negative one, or one written by the program), `double` (a number with a
/// fraction or an exponent, or too large for 64 bits), `bool`, or `Null`.
using Value = boost::any;
/// A share in a value; the parts of a tree are held by these.
using ValuePtr = boost::shared_ptr<Value>;

/// UTF-8 text as unsigned bytes; compares by byte.
using UTF8String = std::basic_string<unsigned char>;

/// Orders keys by their bytes; takes any contiguous text, so that looking a key up makes no string.
struct ByteOrder {
    using is_transparent = void;
    template <class A, class B>
    bool operator()(const A& a, const B& b) const {
        const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
        return order != 0 ? order < 0 : a.size() < b.size();
    }
};

/// A JSON object: members by their keys, in ascending order.
using Object = std::map<UTF8String, ValuePtr, ByteOrder>;
/// A JSON array.
using Array = std::vector<ValuePtr>;
/// JSON's null.
struct Null {};

/// The nesting of arrays and objects over which text is refused: neither parsing nor freeing a tree of this
/// depth can exhaust a small stack.
inline constexpr int kMaximumNesting = 256;

/// Inserts or replaces a member. Throws `boost::bad_any_cast` if `object` holds no object. This and the
/// functions below may be called from any thread; a tree is one thread's at a time while it is changed.
void AddToObject(Value& object, const char* key, const Value& member);
/// The same; takes the member over instead of copying it.
void AddToObject(Value& object, const char* key, Value&& member);

/// The member of that name, or an empty pointer; shared with the tree.
ValuePtr GetVariantInObject(const Object& object, const char* key);

/// The text of a tree: compact, members in ascending order of their keys, integers as integers, doubles in
/// the shortest form that reads back exactly (1.0 stays a double). JSON has no infinity: an infinite double
/// is written as the largest finite one of its sign, 1.7976931348623157e308, and NaN as null. `pretty`
/// indents. Throws `boost::bad_any_cast` for a held type not listed at `Value`.
std::string GetJSONUTF8String(const Value& value, bool pretty);

/// Parses zero-terminated text by RFC 8259, strictly: valid UTF-8, one value, no byte-order mark. Returns an
/// empty pointer if the text is not well-formed, nests deeper than `kMaximumNesting`, or holds a number
/// over the range of a double. Of duplicate members the last wins.
ValuePtr JSONParse(const unsigned char* text);

/// The same for text of `size` bytes; a zero byte in it makes it not well-formed.
ValuePtr JSONParse(const unsigned char* data, std::size_t size);

/// Conversion of a type to and from values; specialized by the owner of the type.
template <class T>
struct JSONConvert;

/// Reading a type from text; specialized by the owner of the type.
template <class T>
struct Serializer;

} // namespace lumcore::serialization

namespace lumcore::utility {

/// ASCII text, zero-terminated, to UTF-16, one code unit a byte. Any thread.
Mosk::String AsciiToUTF16(const char* text);

/// A set of flags in one number.
template <class Number>
class Flags {
  public:
    constexpr explicit Flags(Number bits) : mBits(bits) {}
    /// The flags as bits of the number.
    constexpr Number GetBits() const { return mBits; }

  private:
    Number mBits;
};

/// Reads the resource `name` of the type `type` from a bundle (`Contents/Resources/NAME.TYPE`) into `bytes`.
/// Returns false and leaves `bytes` empty if there is none, or if it can't be read. Any thread.
bool GetBinaryFromModule(CFBundleRef bundle, const Mosk::String& name, const Mosk::String& type,
                         std::vector<std::byte>& bytes);

} // namespace lumcore::utility

namespace lumcore::filesupport {

/// The name of a file that a person chose; the file need not exist.
class File {
  public:
    explicit File(Mosk::String path) : mPath(std::move(path)) {}
    /// The whole path; empty if no file was chosen.
    const Mosk::String& FullPath() const { return mPath; }

  private:
    Mosk::String mPath;
};

} // namespace lumcore::filesupport

namespace lumcore::config {

/// A localized error: a key path and the English text, as in "$$$/path/Name=Text.".
class Error : public std::runtime_error {
  public:
    /// `level` is how grave it is (1 is an error), `module` and `number` tell where it was raised.
    Error(int level, const std::string& key, int module, int number)
        : std::runtime_error(key), mLevel(level), mModule(module), mNumber(number) {}

    int GetLevel() const { return mLevel; }   ///< as given
    int GetModule() const { return mModule; } ///< as given
    int GetNumber() const { return mNumber; } ///< as given
    /// The text after the key's equals sign.
    std::string GetText() const;

  private:
    int mLevel, mModule, mNumber;
};

/// Raises `Error`. Any thread. `report` says whether the host may show it; the replacement values fill
/// placeholders of the text and are empty for all errors of this project.
[[noreturn]] void ThrowError(int level, const char* key, int module, int number, bool report,
                             const Mosk::String& value0, const Mosk::String& value1,
                             const Mosk::String& value2, const Mosk::String& value3);

/// The host's texts in the person's language.
class Localizer {
  public:
    /// The process's one. Any thread.
    static Localizer& Get();
};

} // namespace lumcore::config

namespace lumcore::debug {

/// Tells a developer that a contract failed: the expression, and where it stands. Returns whether to break
/// into the debugger. Any thread.
bool BreakAfterContractDialog(const char* expression, const char* file, const char* function, int line);

/// Whether a debugger watches this process. Any thread.
bool IsDebuggerAttached();

} // namespace lumcore::debug

namespace lumcore::utility {

/// Down-casts `pointer`; a null pointer and one to another class raise the localized error `key` at level 1.
/// Any thread.
template <class Target, class Source>
Target* NonOptionalDynamicCast(Source* pointer, const char* key, int module, int number) {
    if (auto* const target = dynamic_cast<Target*>(pointer)) return target;
    config::ThrowError(1, key, module, number, true, {}, {}, {}, {});
}

} // namespace lumcore::utility
