// The toolkit's model and the scripted platform. Faults sought: a message for what the program set, a
// person's edit that goes beyond what a person can do, a script that fails half-way or without a word about
// why.
#include <array>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Services/TestHooks.h"
#include "Tests/TestScript.h"
#include "lumloom.h"

namespace {

using namespace corvane;
using corvane::testing::Parts;
using corvane::testing::Script;
using lumui::controls::UI_ControlChangedMessage;
using lumui::controls::UI_ControlView;

constexpr char kScript[] = R"(<dialog title="T" default="ok" cancel="no">
    <popup id="list"/> <number id="size" min="1" max="10"/> <number id="free" decimals="1"/>
    <checkbox id="box" text="B"/> <row><button id="save" text="_Save"/></row>
    <statictext id="text" text="none"/> <button id="no" text="Cancel"/> <button id="ok" text="OK"/>
</dialog>)";

/// A dialog that notes what is delivered to it.
class NotingDialog : public lumloom::UI_Loom {
  public:
    NotingDialog() : UI_Loom(u"Test", nullptr, nullptr) {}

    void Initialize() override {
        for (const char* const id : {"list", "size", "free", "box", "save", "no", "ok"}) {
            auto* const control = dynamic_cast<UI_ControlView*>(GetUINodePtr(id, true).get());
            control->NotifyWhenChanged(lumui::ui::BindMessageFunction<NotingDialog, UI_ControlChangedMessage>(
                &NotingDialog::Changed, this));
        }
        auto* const list = dynamic_cast<lumui::controls::UI_Popup*>(GetUINodePtr("list", true).get());
        for (const char16_t* const item : {u"red", u"7", u"gray"}) list->AddItem(item);
        list->DisableItem(2, true);
        mNoted.push_back("built");
    }
    void SetupPostCloseCallback() override { mNoted.push_back("shown"); }
    void Destruction() override { mNoted.push_back(GetView() ? "closed" : "gone"); }

    void Changed(UI_ControlChangedMessage* message) {
        const std::string id = dynamic_cast<ControlModel&>(*message->GetControl()).GetID();
        mNoted.push_back(id);
        if (id == mThrowing) throw std::runtime_error("thrown by " + id);
        if (id == "save") {
            lumui::dialogs::OS_FileSaveAsDialog dialog(nullptr, {{u"", u"x", u"x"}}, 0, u"name",
                                                       lumcore::utility::Flags<unsigned int>(0));
            dialog.RunModal();
            mNoted.push_back(Mosk::ToUTF8(dialog.GetChosenFile().FullPath()));
        }
        if (id == "no" || id == "ok") GetView()->Close();
    }

    void Run(bool buildOnly = false) {
        std::stringstream script(kScript);
        ParseLoomScript(script, buildOnly);
    }
    DialogModel& Model() { return dynamic_cast<DialogModel&>(*GetView()); }
    template <class Control>
    Control& Get(const char* id) {
        return dynamic_cast<Control&>(*Model().Find(id));
    }

    std::vector<std::string> mNoted;
    std::string mThrowing;
};

class UIModelTest : public ::testing::Test {
  protected:
    ~UIModelTest() override { EXPECT_EQ(CountLiveNodes(), 0); }
};

TEST_F(UIModelTest, TheLoomCallsItsHooksInOrder) {
    ScriptedPlatform platform({});
    const ScopedPlatform scope(platform);
    NotingDialog dialog;
    dialog.Run();
    EXPECT_EQ(dialog.mNoted, Parts("built; shown; ok; closed"));
    EXPECT_EQ(dialog.GetView(), nullptr);
    EXPECT_EQ(dialog.GetUINodePtr("list", true), nullptr);

    dialog.Run(true);
    EXPECT_NE(dialog.GetUINodePtr("save", true), nullptr);
    EXPECT_EQ(dialog.GetUINodePtr("save", false), nullptr) << "it lies in a row";
    EXPECT_NE(dialog.GetUINodePtr("ok", false), nullptr);
    EXPECT_EQ(dialog.GetUINodePtr("missing", true), nullptr);
}

TEST_F(UIModelTest, OnlyPeopleRaiseMessages) {
    NotingDialog dialog;
    dialog.Run(true);
    dialog.mNoted.clear();
    DialogModel& model = dialog.Model();
    auto& size = dialog.Get<NumberModel>("size");
    auto& list = dialog.Get<PopupModel>("list");
    auto& box = dialog.Get<CheckboxModel>("box");

    size.SetValue(0.1 + 0.2);
    list.SetValue(2);
    box.SetChecked(true);
    EXPECT_TRUE(dialog.mNoted.empty());
    EXPECT_EQ(size.GetValue(), 0.1 + 0.2) << "the exact number, beyond the limits and the decimals";
    EXPECT_EQ(list.GetValue(), 2) << "a program may choose a disabled item";
    list.SetValue(3);
    EXPECT_EQ(list.GetValue(), -1);

    EXPECT_TRUE(model.Enter(size, 0.1 + 0.2)) << "held to the minimum, so it changes";
    EXPECT_TRUE(model.Enter(size, 1)); // says nothing: it is 1 already
    EXPECT_TRUE(model.Enter(size, 1.4)) << "no decimals: only whole numbers";
    EXPECT_TRUE(model.Enter(size, 11));
    EXPECT_TRUE(model.Enter(size, 12)) << "held at 10 again, which its widget is to show";
    EXPECT_FALSE(model.Enter(size, std::numeric_limits<double>::quiet_NaN()));
    for (const auto& [item, chosen] : {std::pair(0, true), {0, true}, {2, false}, {-1, false}})
        EXPECT_EQ(model.Choose(list, item), chosen) << item;
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(model.Check(box, false));
    EXPECT_EQ(dialog.mNoted, Parts("size; size; size; size; list; list; box"));
    EXPECT_EQ(size.GetValue(), 10);

    size.SetDisabled(true);
    EXPECT_FALSE(model.Enter(size, 5));
    model.Close();
    EXPECT_FALSE(model.Choose(list, 1)) << "nothing works in a closed dialog";
}

TEST_F(UIModelTest, DismissPressesCancelWhereItCan) {
    for (const bool disabled : {false, true}) {
        NotingDialog dialog;
        dialog.Run(true);
        dialog.Get<ButtonModel>("no").SetDisabled(disabled);
        dialog.Model().Dismiss();
        EXPECT_TRUE(dialog.Model().IsClosed());
        EXPECT_EQ(dialog.mNoted.back(), disabled ? "built" : "no");
    }
}

// What a receiver throws closes the dialog and comes out of the modal run, not out of the platform's event
// loop.
TEST_F(UIModelTest, ExceptionsComeOutOfTheRun) {
    ScriptedPlatform platform(Script("box=true; size=2"));
    const ScopedPlatform scope(platform);
    NotingDialog dialog;
    dialog.mThrowing = "box";
    EXPECT_THROW(dialog.Run(), std::runtime_error);
    EXPECT_EQ(dialog.mNoted, Parts("built; shown; box"));
    EXPECT_FALSE(platform.GetError()) << "the script did nothing wrong";
}

TEST_F(UIModelTest, AMessageOfAnotherKindIsAConversionError) {
    NotingDialog dialog;
    lumui::ui::UI_Message message;
    try {
        (*lumui::ui::BindMessageFunction<NotingDialog, UI_ControlChangedMessage>(&NotingDialog::Changed,
                                                                                 &dialog))(&message);
        FAIL() << "nothing was thrown";
    } catch (const lumcore::config::Error& error) {
        EXPECT_EQ(error.GetText(), "Invalid type conversion.");
        EXPECT_EQ((std::array{error.GetLevel(), error.GetModule(), error.GetNumber()}),
                  (std::array{1, 105, 21}));
    }
}

TEST_F(UIModelTest, ScriptsThatCantBeCarriedOutSayWhyAndDoNothing) {
    const struct {
        const char *actions, *answers, *done, *sentence; ///< done: delivered before it failed
    } kRows[] = {
        {"box=true; sise=2", "", "",
         R"(The dialog has no control "sise"; it has list, size, free, box, save, text, no, ok)"},
        {"box=true; size=two", "", "",
         R"(The control "size" accepts a whole number from 1 to 10, not "two")"},
        {"size=11", "", "", R"(The control "size" accepts a whole number from 1 to 10, not "11")"},
        {"size=2.5", "", "", R"(The control "size" accepts a whole number from 1 to 10, not "2.5")"},
        {"size", "", "", R"(The control "size" accepts a whole number from 1 to 10, and none was given)"},
        {"free=2,5", "", "", R"(The control "free" accepts a number, not "2,5")"},
        {"list=blue", "", "", R"(The control "list" accepts one of 0 "red", 1 "7", not "blue")"},
        {"list=-1", "", "", R"(The control "list" accepts one of 0 "red", 1 "7", not "-1")"},
        {"list=gray", "", "", R"(The control "list" accepts one of 0 "red", 1 "7", not "gray")"},
        {"box=1", "", "", R"(The control "box" accepts true or false, not "1")"},
        {"save=now", "", "", R"(The control "save" accepts no value, only a press)"},
        {"text=x", "", "", R"(The control "text" accepts nothing: it is a text to read)"},
        {"ok; box=true", "", "", R"(Nothing can follow a press of "ok", and "box" does)"},
        {"save", "", "save",
         "The dialog asks where to save, and no answer is left: give save=PATH or save=cancel"},
        {"save", "again=yes", "save",
         R"(The dialog asks where to save, which takes save=PATH or save=cancel, not "again=yes")"},
        {"box=true", "save=x", "box",
         R"(The answer "save=x" has no question: the dialog did not ask for it)"},
    };
    for (const auto& row : kRows) {
        ScriptedPlatform platform(Script(row.actions, row.answers));
        const ScopedPlatform scope(platform);
        NotingDialog dialog;
        EXPECT_THROW(dialog.Run(), ScriptError) << row.sentence;
        EXPECT_EQ(platform.GetError().value_or(""), row.sentence);
        EXPECT_EQ(std::vector(dialog.mNoted.begin() + 2, dialog.mNoted.end()), Parts(row.done))
            << row.sentence;
        EXPECT_EQ(platform.GetDump(), "");
    }
}

TEST_F(UIModelTest, ScriptsTakeItemsByTextBeforeIndex) {
    ScriptedPlatform platform(Script("list=7; free=1e3; save; no", "save=/tmp/./a=b.x"));
    const ScopedPlatform scope(platform);
    NotingDialog dialog;
    dialog.Run();
    EXPECT_EQ(
        platform.GetDump(),
        R"({"list":{"class":"UI_Popup","enabled":true,"value":1,"items":["red","7","gray"],"disabledItems":[2]},)"
        R"("size":{"class":"UI_NumberEdit","enabled":true,"value":0.0},)"
        R"("free":{"class":"UI_NumberEdit","enabled":true,"value":1000.0},)"
        R"("box":{"class":"UI_Checkbox","enabled":true,"value":false},)"
        R"("save":{"class":"UI_Button","enabled":true,"title":"Save"},)"
        R"("text":{"class":"UI_StaticText","enabled":true,"value":"none"},)"
        R"("no":{"class":"UI_Button","enabled":true,"title":"Cancel"},)"
        R"("ok":{"class":"UI_Button","enabled":true,"title":"OK"}})");
    EXPECT_EQ(dialog.mNoted, Parts("built; shown; list; free; save; /tmp/a=b.x; no; closed"));
}

TEST_F(UIModelTest, WrongAnswersAreRefusedAtOnce) {
    for (const char* const text : {"", "save", "save=", "again=maybe", "color=1,2,3", "color=1,2,3,4,5",
                                   "color=1,2,3,", "colors=cancel"})
        EXPECT_THROW(ScriptedAnswer::Parse(text), ScriptError) << text;
    for (const char* const text : {"", "=1"}) EXPECT_THROW(ScriptedAction::Parse(text), ScriptError) << text;
}

TEST_F(UIModelTest, NamesGetTheDefaultExtension) {
    const SaveFileRequest request{nullptr, {{u"", u"synthex", u"synthex"}}, 0, u"", true};
    const std::pair<const char16_t*, const char16_t*> kRows[] = {
        {u"/a.b/clip", u"/a.b/clip.synthex"}, {u"/clip.synthex", u"/clip.synthex"},
        {u"/clip.json", u"/clip.json"},       {u"/clip.", u"/clip.synthex"},
        {u"/.clip", u"/.clip.synthex"},       {u"/folder/", u"/folder/"},
    };
    for (const auto& [typed, expected] : kRows) EXPECT_EQ(WithDefaultExtension(typed, request), expected);
}

} // namespace
