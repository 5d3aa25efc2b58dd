#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include <boost/make_shared.hpp>
#include <nlohmann/json.hpp>

#include "lumcore.h"

namespace lumcore::serialization {

namespace {

UTF8String ToBytes(std::string_view text) {
    return UTF8String(text.begin(), text.end());
}

/// Builds the tree from the parser's events. A false return ends the parse.
class TreeBuilder {
  public:
    ValuePtr Take() { return std::move(mRoot); }

    // The parser's event interface; the names are the library's.
    bool null() { return Add(Value(Null())); }
    bool boolean(bool value) { return Add(Value(value)); }
    bool number_integer(std::int64_t value) { return Add(Value(value)); }
    bool number_unsigned(std::uint64_t value) { return Add(Value(value)); }
    bool number_float(double value, const std::string&) { return Add(Value(value)); }
    bool string(const std::string& value) { return Add(Value(ToBytes(value))); }
    bool binary(const std::vector<std::uint8_t>&) { return false; }
    bool start_object(std::size_t) { return Open(Value(Object())); }
    bool start_array(std::size_t) { return Open(Value(Array())); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }
    bool key(const std::string& name) {
        mOpen.back().key = ToBytes(name);
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) { return false; }

  private:
    struct Level {
        Value* container;
        UTF8String key; // of the member that comes next, in an object
    };

    bool Add(Value&& value) { return Insert(std::move(value)) != nullptr; }

    bool Open(Value&& container) {
        if (mOpen.size() == kMaximumNesting) return false;
        mOpen.push_back({Insert(std::move(container)), {}});
        return true;
    }

    bool Close() {
        mOpen.pop_back();
        return true;
    }

    Value* Insert(Value&& value) {
        ValuePtr pointer = boost::make_shared<Value>(std::move(value));
        Value* const inserted = pointer.get();
        if (mOpen.empty()) {
            mRoot = std::move(pointer);
        } else if (auto* const object = boost::any_cast<Object>(mOpen.back().container)) {
            // Our own text lists members in order: each then belongs at the end.
            object->insert_or_assign(object->end(), std::move(mOpen.back().key), std::move(pointer));
        } else {
            boost::any_cast<Array>(mOpen.back().container)->push_back(std::move(pointer));
        }
        return inserted;
    }

    ValuePtr mRoot;
    std::vector<Level> mOpen;
};

/// Writes a tree as text.
class Writer {
  public:
    explicit Writer(bool pretty) : mPretty(pretty) {}

    std::string Take() { return std::move(mText); }

    void Write(const Value& value) {
        // The most frequent kinds first.
        if (const auto* const number = boost::any_cast<double>(&value))
            WriteDouble(*number);
        else if (const auto* const natural = boost::any_cast<std::uint64_t>(&value))
            WriteNumber(*natural);
        else if (const auto* const object = boost::any_cast<Object>(&value))
            WriteObject(*object);
        else if (const auto* const integer = boost::any_cast<std::int64_t>(&value))
            WriteNumber(*integer);
        else if (const auto* const array = boost::any_cast<Array>(&value))
            WriteArray(*array);
        else if (const auto* const text = boost::any_cast<UTF8String>(&value))
            WriteText(*text);
        else if (const auto* const truth = boost::any_cast<bool>(&value))
            mText += *truth ? "true" : "false";
        else if (boost::any_cast<Null>(&value))
            mText += "null";
        else
            throw boost::bad_any_cast();
    }

  private:
    void WriteObject(const Object& object) {
        mText += '{';
        ++mDepth;
        const char* separator = "";
        for (const auto& [key, member] : object) {
            mText += separator;
            separator = ",";
            NewLine();
            WriteText(key);
            mText += mPretty ? ": " : ":";
            Write(*member);
        }
        --mDepth;
        if (!object.empty()) NewLine();
        mText += '}';
    }

    void WriteArray(const Array& array) {
        mText += '[';
        ++mDepth;
        const char* separator = "";
        for (const ValuePtr& element : array) {
            mText += separator;
            separator = ",";
            NewLine();
            Write(*element);
        }
        --mDepth;
        if (!array.empty()) NewLine();
        mText += ']';
    }

    void WriteText(const UTF8String& text) {
        const std::string_view narrow(reinterpret_cast<const char*>(text.data()), text.size());
        const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
        if (std::ranges::all_of(narrow, isPlain))
            mText.append(1, '"').append(narrow).append(1, '"');
        else
            mText += nlohmann::json(narrow).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

    template <class Number>
    void WriteNumber(Number number) {
        char digits[32];
        const auto end = std::to_chars(digits, std::end(digits), number).ptr;
        mText.append(digits, end);
    }

    void WriteDouble(double number) {
        if (std::isnan(number)) {
            mText += "null";
            return;
        }
        // What an infinite number becomes is spelled in full: the shortest form has another sign of the
        // exponent.
        if (std::abs(number) >= std::numeric_limits<double>::max()) {
            mText += std::signbit(number) ? "-1.7976931348623157e308" : "1.7976931348623157e308";
            return;
        }
        const std::size_t start = mText.size();
        WriteNumber(number);
        // A double stays a double: without a fraction or an exponent it would be read as an integer.
        if (mText.find_first_of(".e", start) == std::string::npos) mText += ".0";
    }

    void NewLine() {
        if (mPretty) mText.append(1, '\n').append(2 * mDepth, ' ');
    }

    bool mPretty;
    std::size_t mDepth = 0;
    std::string mText;
};

template <class T>
T& Held(Value& value) {
    if (auto* const held = boost::any_cast<T>(&value)) return *held;
    throw boost::bad_any_cast();
}

} // namespace

void AddToObject(Value& object, const char* key, const Value& member) {
    AddToObject(object, key, Value(member));
}

void AddToObject(Value& object, const char* key, Value&& member) {
    Object& members = Held<Object>(object);
    members.insert_or_assign(members.end(), ToBytes(key), boost::make_shared<Value>(std::move(member)));
}

ValuePtr GetVariantInObject(const Object& object, const char* key) {
    const auto found = object.find(std::string_view(key));
    return found == object.end() ? ValuePtr() : found->second;
}

std::string GetJSONUTF8String(const Value& value, bool pretty) {
    Writer writer(pretty);
    writer.Write(value);
    return writer.Take();
}

ValuePtr JSONParse(const unsigned char* text) {
    return JSONParse(text, std::strlen(reinterpret_cast<const char*>(text)));
}

ValuePtr JSONParse(const unsigned char* data, std::size_t size) {
    // The library's parser takes a zero byte for the end of the text and skips a byte-order mark.
    constexpr unsigned char kByteOrderMark[] = {0xEF, 0xBB, 0xBF};
    if (size == 0 || std::memchr(data, 0, size) != nullptr) return {};
    if (size >= 3 && std::memcmp(data, kByteOrderMark, 3) == 0) return {};
    TreeBuilder builder;
    if (!nlohmann::json::sax_parse(data, data + size, &builder)) return {};
    return builder.Take();
}

} // namespace lumcore::serialization
