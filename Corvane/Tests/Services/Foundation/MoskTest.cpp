// Faults sought: text that changes on its way, shares that are given up twice or never, bundles that stay
// known.
#include "Mosk.h"
#include "Services/Foundation/AlertSink.h"
#include "Services/Foundation/Bundles.h"
#include "lumcore.h"

#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

namespace {

TEST(MoskString, ValidTextIsLosslessAndInvalidTextIsRefused) {
    for (const std::string& text : {std::string(), std::string("clip"), std::string("\xC3\xA9\xE2\x82\xAC"),
                                    std::string("\xF0\x9F\x8E\xAC"), std::string("a\0b", 3)})
        EXPECT_EQ(Mosk::ToUTF8(Mosk::FromUTF8(text)), text);
    EXPECT_EQ(Mosk::FromUTF8("\xF0\x9F\x8E\xAC").size(), 2u);
    EXPECT_THROW(Mosk::FromUTF8("\xFF"), std::invalid_argument);
    EXPECT_THROW(Mosk::ToUTF8(u"\xD800"), std::invalid_argument);
    EXPECT_EQ(lumcore::utility::AsciiToUTF16("fps"), u"fps");
}

TEST(ObjectPtr, OnlyTheLastHolderDestroys) {
    const auto watched = std::make_shared<int>();
    using Owned = std::shared_ptr<int>;
    Mosk::ObjectPtr<Owned, Mosk::AtomicValue> first, second;
    first.mCounter = second.mCounter =
        static_cast<std::int32_t*>(Mosk::Allocator::Allocate(sizeof(std::int32_t)));
    *first.mCounter = 2;
    first.mObject = second.mObject = new Owned(watched);
    for (int i = 0; i < 2; ++i) first.Reset();
    EXPECT_EQ(watched.use_count(), 2);
    second.Reset();
    EXPECT_EQ(watched.use_count(), 1);
    EXPECT_TRUE(second.mCounter == nullptr && second.mObject == nullptr);
}

TEST(Alerts, ReachTheNewestSinkOfTheThread) {
    corvane::AlertCollector outer;
    bool disabled = false;
    {
        corvane::AlertCollector inner;
        EXPECT_FALSE(Mosk::ThrowAfterUnhandledExceptionAlert(disabled, "one"));
        EXPECT_EQ(inner.Text(), "one");
    }
    Mosk::ThrowAfterUnhandledExceptionAlert(disabled, "two");
    EXPECT_EQ(outer.Text(), "two");
    EXPECT_FALSE(disabled);
}

} // namespace
