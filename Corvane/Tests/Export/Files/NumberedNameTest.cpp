// Faults sought: a name that reaches printf, numbers in the folder's name taken for the frame's.
#include "Export/Files/NumberedName.h"

#include <gtest/gtest.h>

#include "Export/Export.h"

namespace {

using corvane::NumberedName;

TEST(NumberedName, PutsTheNumberWhereTheNameSays) {
    const std::pair<const char*, const char*> kRows[] = {{"a.%05d.png", "a.00123.png"},
                                                         {"%d.png", "123.png"},
                                                         {"%4d", "0123"},
                                                         {"50%%-%02d.png", "50%-123.png"},
                                                         {"in/d%d/a.%03d.png", "in/d%d/a.123.png"}};
    for (const auto& [name, expected] : kRows) EXPECT_EQ(NumberedName::Parse(name)->For(123), expected);
    for (const char* const name : {"plain.png", "100%%.png"}) EXPECT_FALSE(NumberedName::Parse(name)) << name;
}

TEST(NumberedName, RefusesAnythingElse) {
    for (const char* name :
         {"%s.png", "%", "%05", "%n.png", "%d%d.png", "%-5d.png", "%99999999999d", "%19d", "%ld"})
        EXPECT_THROW(NumberedName::Parse(name), corvane::UsageFailure) << name;
}

} // namespace
