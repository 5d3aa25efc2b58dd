// The layout script. Faults sought: a slip in a script that goes unnoticed until somebody misses a control,
// or a message that does not lead to its line.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Services/UI/UILayout.h"

namespace {

using corvane::ParseLayout;

std::string Problem(std::string_view script) {
    try {
        ParseLayout(script, u"Test");
    } catch (const corvane::LayoutError& error) {
        return error.what();
    }
    return "none";
}

/// A script around some elements, which begin on line 2.
std::string Around(std::string_view elements) {
    return "<dialog title='T' default='ok' cancel='ok'>\n" + std::string(elements) +
           "\n<button id='ok' text='OK'/></dialog>";
}

TEST(UILayout, SlipsAreNamedWithTheirLine) {
    const struct {
        const char* elements;
        int line;
        const char *expected, *found;
    } kRows[] = {
        {"<group text='G'>\n<row><bogus/></row></group>", 3, "an element of the layout script", "<bogus>"},
        {"<popup/>", 2, R"(the attribute "id")", "<popup> without it"},
        {"<popup id=''/>", 2, "an id", "an empty one"},
        {"\n<popup id='ok'/>", 4, "each id once", R"("ok" twice)"},
        {"<popup id='a' min='1'/>", 2, "an attribute that <popup> has", R"("min")"},
        {"<popup id='a' tip='x' tip='y'/>", 2, "each attribute once", R"("tip" twice)"},
        {"<popup id='a'>text</popup>", 2, "nothing in <popup>", "content"},
        {"<row>text</row>", 2, "elements in <row>", R"("text")"},
        {"<number id='a' min='1x'/>", 2, R"(a number in "min")", R"("1x")"},
        {"<number id='a' max='inf'/>", 2, R"(a number in "max")", R"("inf")"},
        {"<number id='a' step=''/>", 2, R"(a number in "step")", R"("")"},
        {"<number id='a' min='2' max='1'/>", 2, R"("min" at most "max")", "2 and 1"},
        {"<number id='a' step='0'/>", 2, R"(a "step" above 0)", "0"},
        {"<number id='a' decimals='1.5'/>", 2, R"("decimals" from 0 to 15)", "1.5"},
        {"<checkbox id='a' text='A' checked='yes'/>", 2, R"("true" or "false" in "checked")", R"("yes")"},
        {"<label text='L' for='b'/>", 2, R"(a control's id in "for")", R"("b")"},
        {"<textbutton id='a' swatch='ok,ok,ok,ok'/>", 2, R"(a number's id in "swatch")", R"("ok")"},
        {"<number id='n'/><textbutton id='a' swatch='n,n'/>", 2, R"(four numbers in "swatch")", R"("n,n")"},
        {"<popup id='a' tip='\xff'/>", 2, R"(UTF-8 in "tip")", "other bytes"},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(Problem(Around(row.elements)), "layout Test, line " + std::to_string(row.line) +
                                                     ": expected " + row.expected + ", found " + row.found);
}

TEST(UILayout, OnlyOneWholeDialogIsTaken) {
    const auto deep = [](const std::string& tag, int levels = 100000) {
        std::string text;
        for (int i = 0; i < levels; ++i) text += tag;
        return text;
    };
    const std::string good = Around("");
    const std::pair<std::string, const char*> kRows[] = {
        {"", "line 1: expected a <dialog>, found none"},
        {"<row/>", "expected one <dialog> and nothing beside it, found <row>"},
        {good + "\ntail", "line 3: expected one <dialog> and nothing beside it, found text"},
        {good + good, "expected one <dialog> and nothing beside it, found <dialog>"},
        {"<!DOCTYPE dialog>" + good, "nothing beside it, found text"},
        {good.substr(0, good.size() - 1), "line 3: expected well-formed XML, found a problem: "},
        {good + '\0', "expected text, found a zero byte"},
        {"<dialog title='T' default='ok' cancel='no'><button id='ok' text='OK'/></dialog>",
         "expected a button's id in \"cancel\", found \"no\""},
        {Around(deep("<row>")), "expected"},
        {Around(deep("<row>") + deep("</row>")), "expected at most 16 levels"},
        {Around(deep("<row>", 16) + deep("</row>", 16)), "expected at most 16 levels"},
        {Around(deep("<row>", 15) + deep("</row>", 15)), "none"},
    };
    for (const auto& [script, problem] : kRows)
        EXPECT_NE(Problem(script).find(problem), std::string::npos) << problem;
}

TEST(UILayout, TextsKeepTheirMnemonics) {
    const struct {
        const char *text, *plain;
        int mnemonic; ///< negative: none
    } kRows[] = {{"_Width", "Width", 0},
                 {"Pixel _format", "Pixel format", 6},
                 {"a__b", "a_b", -1},
                 {"end_", "end_", -1}};
    for (const auto& row : kRows) {
        const auto layout = ParseLayout(Around("<label text=\"" + std::string(row.text) + "\"/>"), u"Test");
        const corvane::LabelText& label = layout.children[0].label;
        EXPECT_EQ(Mosk::ToUTF8(label.text), row.plain);
        EXPECT_EQ(label.mnemonic ? static_cast<int>(*label.mnemonic) : -1, row.mnemonic) << row.text;
    }
}

/// The script that ships.
std::string ShippedScript() {
    std::ifstream file(SYNTHEX_SOURCE_DIR "/Importers/ImporterSynthex/Resources/ImporterSynthexPrefs.loom");
    return {std::istreambuf_iterator<char>(file), {}};
}

void CollectMnemonics(const std::vector<corvane::LayoutNode>& nodes, std::u16string& letters) {
    for (const auto& node : nodes) {
        if (node.label.mnemonic)
            letters += static_cast<char16_t>(node.label.text[*node.label.mnemonic] & 0x5F); // upper case
        CollectMnemonics(node.children, letters);
    }
}

TEST(UILayout, NoTwoControlsShareALetter) {
    std::u16string letters;
    CollectMnemonics(ParseLayout(ShippedScript(), u"Test").children, letters);
    EXPECT_GT(letters.size(), 10u);
    std::ranges::sort(letters);
    EXPECT_EQ(std::ranges::adjacent_find(letters), letters.end()) << Mosk::ToUTF8(letters);
}

} // namespace
