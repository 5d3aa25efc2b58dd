// Faults sought: a name that reaches printf, numbers in the folder's name taken for the frame's.
#include "Export/NumberedName.h"

#include <gtest/gtest.h>

#include "Export/Export.h"

namespace {

using corvane::NumberedName;

TEST(NumberedName, PutsTheNumberWhereTheNameSays) {
    struct Row {
        const char* name;
        std::int64_t number;
        const char* expected; // null: no number in it
    };
    const Row rows[] = {{"a.%05d.png", 7, "a.00007.png"},
                        {"%d.png", 0, "0.png"},
                        {"%4d", 12, "0012"},
                        {"50%%-%02d.png", 123, "50%-123.png"},
                        {"in/d%d/a.%03d.png", 5, "in/d%d/a.005.png"},
                        {"plain.png", 1, nullptr},
                        {"100%%.png", 1, nullptr}};
    for (const Row& row : rows) {
        const auto name = NumberedName::Parse(row.name);
        ASSERT_EQ(name.has_value(), row.expected != nullptr) << row.name;
        EXPECT_EQ(name ? name->For(row.number).string() : "none", row.expected ? row.expected : "none");
    }
}

TEST(NumberedName, RefusesAnythingElse) {
    for (const char* name :
         {"%s.png", "%", "%05", "%n.png", "%d%d.png", "%-5d.png", "%99999999999d", "%19d", "%ld"})
        EXPECT_THROW(NumberedName::Parse(name), corvane::UsageFailure) << name;
}

} // namespace
