// The layout script. Faults sought: a slip in a script that goes unnoticed until somebody misses a control,
// or a message that does not lead to its line.
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "Services/UILayout.h"

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
    return "<dialog title=\"T\" default=\"ok\" cancel=\"ok\">\n" + std::string(elements) +
           "\n<button id=\"ok\" text=\"OK\"/></dialog>";
}

TEST(UILayout, SlipsAreNamedWithTheirLine) {
    const struct {
        const char *elements, *problem;
    } kRows[] = {
        {"<popup id=\"a\"/>", "none"},
        {"<group text=\"G\">\n<row><bogus/></row></group>",
         "line 3: expected an element of the layout script, found <bogus>"},
        {"<popup/>", "line 2: expected the attribute \"id\", found <popup> without it"},
        {"<popup id=\"\"/>", "line 2: expected an id, found an empty one"},
        {"\n<popup id=\"ok\"/>", "line 4: expected each id once, found \"ok\" twice"},
        {"<popup id=\"a\" min=\"1\"/>", "line 2: expected an attribute that <popup> has, found \"min\""},
        {"<popup id=\"a\" tip=\"x\" tip=\"y\"/>",
         "line 2: expected each attribute once, found \"tip\" twice"},
        {"<popup id=\"a\">text</popup>", "line 2: expected nothing in <popup>, found content"},
        {"<row>text</row>", "line 2: expected elements in <row>, found \"text\""},
        {"<number id=\"a\" min=\"1x\"/>", "line 2: expected a number in \"min\", found \"1x\""},
        {"<number id=\"a\" max=\"inf\"/>", "line 2: expected a number in \"max\", found \"inf\""},
        {"<number id=\"a\" step=\"\"/>", "line 2: expected a number in \"step\", found \"\""},
        {"<number id=\"a\" min=\"2\" max=\"1\"/>", "line 2: expected \"min\" at most \"max\", found 2 and 1"},
        {"<number id=\"a\" step=\"0\"/>", "line 2: expected a \"step\" above 0, found 0"},
        {"<number id=\"a\" decimals=\"1.5\"/>", "line 2: expected \"decimals\" from 0 to 15, found 1.5"},
        {"<checkbox id=\"a\" text=\"A\" checked=\"yes\"/>",
         "line 2: expected \"true\" or \"false\" in \"checked\", found \"yes\""},
        {"<label text=\"L\" for=\"b\"/>", "line 2: expected a control's id in \"for\", found \"b\""},
        {"<textbutton id=\"a\" swatch=\"ok,ok,ok,ok\"/>",
         "line 2: expected a number's id in \"swatch\", found \"ok\""},
        {"<number id=\"n\"/><textbutton id=\"a\" swatch=\"n,n\"/>",
         "line 2: expected four numbers in \"swatch\", found \"n,n\""},
        {"<popup id=\"a\" tip=\"\xff\"/>", "line 2: expected UTF-8 in \"tip\", found other bytes"},
    };
    for (const auto& row : kRows) {
        const std::string problem = Problem(Around(row.elements));
        EXPECT_EQ(problem,
                  row.problem == std::string("none") ? "none" : std::string("layout Test, ") + row.problem);
    }
}

TEST(UILayout, OnlyOneWholeDialogIsTaken) {
    const std::string good = Around("");
    const struct {
        std::string script, problem;
    } kRows[] = {
        {"", "line 1: expected a <dialog>, found none"},
        {"<row/>", "expected one <dialog> and nothing beside it, found <row>"},
        {good + "\ntail", "line 3: expected one <dialog> and nothing beside it, found text"},
        {good + good, "expected one <dialog> and nothing beside it, found <dialog>"},
        {"<!DOCTYPE dialog>" + good, "nothing beside it, found text"},
        {good.substr(0, good.size() - 1), "line 3: expected well-formed XML, found a problem: "},
        {good + '\0', "expected text, found a zero byte"},
        {"<dialog title=\"T\" default=\"ok\" cancel=\"no\"><button id=\"ok\" text=\"OK\"/></dialog>",
         "expected a button's id in \"cancel\", found \"no\""},
    };
    for (const auto& row : kRows)
        EXPECT_NE(Problem(row.script).find(row.problem), std::string::npos) << Problem(row.script);

    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<row>";
    EXPECT_NE(Problem(Around(deep)).find("expected"), std::string::npos);
    std::string closed = deep;
    for (int i = 0; i < 100000; ++i) closed += "</row>";
    EXPECT_NE(Problem(Around(closed)).find("expected at most 16 levels"), std::string::npos);
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

// The script that ships, cut short and with bytes changed all over: refused or taken, never a crash. The
// steps have no common factor with the list of bytes, so each of them meets every part of the script.
TEST(UILayout, NoScriptDoesHarm) {
    std::ifstream file(SYNTHEX_SOURCE_DIR "/Importers/ImporterSynthex/Resources/ImporterSynthexPrefs.loom");
    const std::string script{std::istreambuf_iterator<char>(file), {}};
    ASSERT_EQ(Problem(script), "none");
    const std::string whole = script.substr(0, script.rfind('>') + 1);
    for (std::size_t size = 0; size < whole.size(); size += 3)
        EXPECT_NE(Problem(whole.substr(0, size)), "none") << size;
    constexpr std::string_view kBytes("\0<&\"\xff", 5);
    for (std::size_t at = 0; at < script.size(); at += 2) {
        std::string changed = script;
        changed[at] = kBytes[at % kBytes.size()];
        Problem(changed);
    }
}

} // namespace
