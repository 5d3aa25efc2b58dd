/// The platform without a person: dialogs are worked by a list of actions and answers. UI thread only.
#pragma once

#include <deque>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "UIPlatform.h"

namespace corvane {

/// A script that can't be carried out, as one sentence that names the control and what it accepts.
class ScriptError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One thing that a person does in a dialog: presses a button (no value), or gives another control a value.
struct ScriptedAction {
    std::string id;
    std::optional<std::string> value;

    /// Reads "ID" or "ID=VALUE". Throws `ScriptError` if the id is empty. Any thread.
    static ScriptedAction Parse(std::string_view text);
};

/// One answer to a question that the dialog asks on the way.
struct ScriptedAnswer {
    struct Save {
        std::optional<std::string> path; ///< nothing: cancelled
    };
    struct Again {
        bool yes;
    };
    struct Color {
        std::optional<lumui::controls::ColorRGBA> color; ///< nothing: cancelled
    };

    std::string text; ///< as it was given, for messages
    std::variant<Save, Again, Color> answer;

    /// Reads "save=PATH", "save=cancel", "again=yes", "again=no", "color=R,G,B,A" or "color=cancel". Throws
    /// `ScriptError` for anything else. Any thread.
    static ScriptedAnswer Parse(std::string_view text);
};

/// All that happens in one dialog. Both lists are carried out in order. As far as can be told beforehand,
/// nothing is done unless all of it can be.
struct DialogScript {
    std::vector<ScriptedAction> actions;
    std::vector<ScriptedAnswer> answers;
    bool cancel = false; ///< after the actions, press the cancel button instead of the default one
    bool dump = false;   ///< write down the dialog's state just before it closes
};

/// Carries out a script in the one dialog that is shown while this is the platform.
///
/// A number takes decimal text within its limits, a popup an enabled item's text or its index, a check box
/// "true" or "false". All actions are checked against the dialog before the first one is done; what only
/// shows on the way (a disabled control or item, a question without an answer, an answer without a question)
/// is checked when it comes up. A script that fails throws `ScriptError` into the dialog, which then hands
/// nothing over.
class ScriptedPlatform : public UI_Platform {
  public:
    explicit ScriptedPlatform(DialogScript script);

    std::optional<Mosk::String> RunSaveFileDialog(const SaveFileRequest& request) override;
    std::int32_t RunMessageBox(const MessageBoxRequest& request) override;
    std::optional<lumui::controls::ColorRGBA> RunColorPicker(const ColorPickerRequest& request) override;

    /// Why the script could not be carried out; nothing if it was. The exception itself ends in the plug-in,
    /// which reports it like any other.
    const std::optional<std::string>& GetError() const { return mError; }
    /// The dialog's state just before it was closed, as `DumpDialog` writes it. Empty if it was not asked
    /// for, or if the script failed before that.
    const std::string& GetDump() const { return mDump; }

  protected:
    void ShowDialog(DialogModel& dialog, lumui::ui::UI_Node* parent) override;

  private:
    void CarryOut(DialogModel& dialog);
    [[noreturn]] void Fail(const std::string& sentence);
    template <class Answer>
    Answer TakeAnswer(const char* question, const char* form);

    std::vector<ScriptedAction> mActions;
    std::deque<ScriptedAnswer> mAnswers;
    bool mCancel, mKeepDump;
    std::string mDump;
    std::optional<std::string> mError;
};

/// The state of a dialog's controls as one JSON object on one line, in the order of the layout: control id ->
/// its class, whether it is enabled, and value, items and title as far as it has them. UI thread.
std::string DumpDialog(const DialogModel& dialog);

} // namespace corvane
