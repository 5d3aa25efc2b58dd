// Faults sought: text that the library takes although RFC 8259 does not, wrong kinds of numbers, doubles that
// do not read back, trees that exhaust the stack.
#include "lumcore.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace lumcore::serialization;

ValuePtr Parse(const std::string& text) {
    return JSONParse(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

TEST(JSON, RefusesWhatIsNotWellFormed) {
    for (const char* const text : {"",           " ",
                                   "{",          "{}x",
                                   "{} {}",      "{,}",
                                   "[1,]",       "{\"a\":01}",
                                   "{\"a\":+1}", "{\"a\":.5}",
                                   "{'a':1}",    "NaN",
                                   "// x\n1",    "\xEF\xBB\xBF{}",
                                   "\"\x80\"",   "\"\xED\xA0\x80\"",
                                   "\"a\nb\"",   "\"\\ud800\"",
                                   "1e999",      "-1e999"})
        EXPECT_FALSE(Parse(text)) << text;
    EXPECT_FALSE(Parse(std::string("{}\0", 3)));
    EXPECT_TRUE(JSONParse(reinterpret_cast<const unsigned char*>("{}\0rubbish")));
}

TEST(JSON, NestingIsLimited) {
    EXPECT_TRUE(Parse(Repeat("[", 256) + Repeat("]", 256)));
    EXPECT_FALSE(Parse(Repeat("[", 257) + Repeat("]", 257)));
    EXPECT_FALSE(Parse(Repeat("{\"a\":", 100000)));
    EXPECT_FALSE(Parse(Repeat("[{\"a\":", 200) + "1" + Repeat("}]", 200)));
}

TEST(JSON, NumbersKeepTheirKind) {
    const auto held = [](const std::string& text) -> const std::type_info& { return Parse(text)->type(); };
    for (const char* const text : {"0", "1", "18446744073709551615"})
        EXPECT_EQ(held(text), typeid(std::uint64_t)) << text;
    for (const char* const text : {"-1", "-9223372036854775808"})
        EXPECT_EQ(held(text), typeid(std::int64_t)) << text;
    for (const char* const text : {"1.0", "1e0", "18446744073709551616", "-9223372036854775809", "1e-400"})
        EXPECT_EQ(held(text), typeid(double)) << text;
}

TEST(JSON, TextIsCompactOrderedAndReadsBack) {
    const std::string text =
        "{\"B\":[],\"a\":[1,-2,0.5,1.0,true,false,null,\"\\\"\",\"\\u0001\xC3\xA9\"],\"b\":{\"\":{}}}";
    EXPECT_EQ(GetJSONUTF8String(*Parse(" { \"b\" : { \"\":{} }, \"a\":[1,-2,0.5,1.0,true,false,null,"
                                       "\"\\\"\",\"\\u0001\\u00e9\"] , \"B\":[]}"),
                                false),
              text);
    EXPECT_EQ(GetJSONUTF8String(*Parse(GetJSONUTF8String(*Parse(text), true)), false), text);
}

TEST(JSON, EveryDoubleReadsBackExactly) {
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, -0.0, 1.0, 0.1, double{0.1f}, 1.0 / 3, 1e15, 1e16, 1e22, 123456789012345680.0, Limits::min(),
          Limits::denorm_min(), Limits::max(), -Limits::max()}) {
        const ValuePtr back = Parse(GetJSONUTF8String(Value(number), false));
        ASSERT_TRUE(back) << number;
        const double read = boost::any_cast<double>(*back);
        EXPECT_EQ(read, number);
        EXPECT_EQ(std::signbit(read), std::signbit(number));
    }
}

// JSON has no infinity; a float reader must still get one back.
TEST(JSON, InfinityIsWrittenAsWhatReadsAsAFloatInfinity) {
    const std::string text = GetJSONUTF8String(Value(-std::numeric_limits<double>::infinity()), false);
    EXPECT_EQ(text, "-1.7976931348623157e308");
    const ValuePtr back = Parse(text);
    EXPECT_EQ(static_cast<float>(boost::any_cast<double>(*back)), -std::numeric_limits<float>::infinity());
    EXPECT_EQ(GetJSONUTF8String(Value(std::nan("")), false), "null");
}

TEST(JSON, OtherKindsAreRefused) {
    Value number = std::uint64_t{1};
    EXPECT_THROW(AddToObject(number, "a", number), boost::bad_any_cast);
    EXPECT_THROW(GetJSONUTF8String(Value(1.0f), false), boost::bad_any_cast);
}

} // namespace
