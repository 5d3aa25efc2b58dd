#include "ScriptedPlatform.h"

#include <array>
#include <charconv>
#include <filesystem>
#include <utility>

#include <fmt/format.h>

namespace corvane {

namespace {

std::string DescribeLimits(const NumberLimits& limits) {
    const char* const kind = limits.decimals == 0 ? "a whole number" : "a number";
    if (limits.minimum && limits.maximum)
        return fmt::format("{} from {} to {}", kind, *limits.minimum, *limits.maximum);
    if (limits.minimum) return fmt::format("{} from {} up", kind, *limits.minimum);
    if (limits.maximum) return fmt::format("{} up to {}", kind, *limits.maximum);
    return kind;
}

std::string DescribeItems(const PopupModel& popup) {
    std::string list;
    for (std::size_t i = 0; i < popup.GetItems().size(); ++i) {
        const auto& item = popup.GetItems()[i];
        if (item.enabled)
            list += fmt::format("{}{} \"{}\"", list.empty() ? "" : ", ", i, Mosk::ToUTF8(item.text));
    }
    return "one of " + list;
}

/// The index of the item that `value` names by its text or its index; nothing if there is none.
std::optional<long> FindItem(const PopupModel& popup, const std::string& value) {
    for (std::size_t i = 0; i < popup.GetItems().size(); ++i)
        if (Mosk::ToUTF8(popup.GetItems()[i].text) == value) return static_cast<long>(i);
    long index = -1;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), index);
    if (error != std::errc() || end != value.data() + value.size() || !popup.HasItem(index))
        return std::nullopt;
    return index;
}

/// One action on one dialog. Checking throws; doing follows a check.
class Step {
  public:
    Step(DialogModel& dialog, const ScriptedAction& action) : mDialog(dialog), mAction(action) {
        mControl = dialog.Find(action.id);
        if (!mControl)
            throw ScriptError(
                fmt::format("The dialog has no control \"{}\"; it has {}", action.id, ListIDs()));
    }

    /// Checks all that does not depend on what happens before this step.
    void Check() const;
    /// Checks the rest and does it.
    void Do() const;

    bool ClosesDialog() const {
        const Layout& layout = mDialog.GetLayout();
        return mAction.id == layout.defaultButton || mAction.id == layout.cancelButton;
    }

  private:
    std::string ListIDs() const;
    [[noreturn]] void Refuse(const std::string& accepted) const;
    const std::string& Value(const std::string& accepted) const;
    double Number(const NumberModel& number) const;
    long Item(const PopupModel& popup) const;
    bool Checked() const;

    DialogModel& mDialog;
    const ScriptedAction& mAction;
    ControlModel* mControl;
};

std::string Step::ListIDs() const {
    std::string list;
    for (const ControlModel* const control : mDialog.GetControls())
        list += (list.empty() ? "" : ", ") + control->GetID();
    return list;
}

void Step::Refuse(const std::string& accepted) const {
    const std::string given =
        mAction.value ? fmt::format("not \"{}\"", *mAction.value) : "and none was given";
    throw ScriptError(fmt::format("The control \"{}\" accepts {}, {}", mAction.id, accepted, given));
}

const std::string& Step::Value(const std::string& accepted) const {
    if (!mAction.value) Refuse(accepted);
    return *mAction.value;
}

double Step::Number(const NumberModel& number) const {
    const std::string accepted = DescribeLimits(number.GetLayout().limits);
    const auto value = ParseFiniteNumber(Value(accepted));
    if (!value || !number.GetLayout().limits.Holds(*value)) Refuse(accepted);
    return *value;
}

long Step::Item(const PopupModel& popup) const {
    const auto index = FindItem(popup, Value(DescribeItems(popup)));
    if (!index) Refuse(DescribeItems(popup));
    return *index;
}

bool Step::Checked() const {
    constexpr auto kAccepted = "true or false";
    const std::string& value = Value(kAccepted);
    if (value != "true" && value != "false") Refuse(kAccepted);
    return value == "true";
}

void Step::Check() const {
    std::visit(PerClass{
                   [&](NumberModel* number) { Number(*number); },
                   [&](PopupModel* popup) { Item(*popup); },
                   [&](CheckboxModel*) { Checked(); },
                   [&](StaticTextModel*) {
                       throw ScriptError(fmt::format(
                           "The control \"{}\" accepts nothing: it is a text to read", mAction.id));
                   },
                   [&](auto*) {
                       if (mAction.value)
                           throw ScriptError(
                               fmt::format("The control \"{}\" accepts no value, only a press", mAction.id));
                   },
               },
               mControl->AsClass());
}

void Step::Do() const {
    if (mDialog.IsClosed()) throw ScriptError(fmt::format("The dialog was closed before \"{}\"", mAction.id));
    if (!mControl->IsEnabled())
        throw ScriptError(
            fmt::format("The control \"{}\" accepts nothing: it is disabled at this point", mAction.id));
    std::visit(PerClass{
                   [&](NumberModel* number) { mDialog.Enter(*number, Number(*number)); },
                   [&](PopupModel* popup) {
                       if (!mDialog.Choose(*popup, Item(*popup))) Refuse(DescribeItems(*popup));
                   },
                   [&](CheckboxModel* box) { mDialog.Check(*box, Checked()); },
                   [&](auto* button) { mDialog.Press(*button); },
               },
               mControl->AsClass());
}

/// The four components of "R,G,B,A".
std::optional<lumui::controls::ColorRGBA> ParseColor(std::string_view text) {
    std::array<float, 4> components{};
    for (std::size_t i = 0; i < components.size(); ++i) {
        const std::size_t comma = text.find(',');
        if ((comma == text.npos) != (i == components.size() - 1)) return std::nullopt;
        const auto number = ParseFiniteNumber(text.substr(0, comma));
        if (!number) return std::nullopt;
        components[i] = static_cast<float>(*number);
        text.remove_prefix(comma == text.npos ? text.size() : comma + 1);
    }
    return lumui::controls::ColorRGBA{components[0], components[1], components[2], components[3]};
}

} // namespace

ScriptedAction ScriptedAction::Parse(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == 0 || text.empty())
        throw ScriptError(fmt::format("An action is ID=VALUE, or ID to press a button, not \"{}\"", text));
    ScriptedAction action{std::string(text.substr(0, equals)), std::nullopt};
    if (equals != text.npos) action.value = text.substr(equals + 1);
    return action;
}

ScriptedAnswer ScriptedAnswer::Parse(std::string_view text) {
    const std::size_t equals = std::min(text.find('='), text.size());
    const std::string_view question = text.substr(0, equals),
                           value = text.substr(std::min(equals + 1, text.size()));
    ScriptedAnswer result{std::string(text), Again{value == "yes"}};
    if (question == "again" && (value == "yes" || value == "no")) return result;
    if (question == "save" && !value.empty()) {
        result.answer = value == "cancel" ? Save{} : Save{std::string(value)};
        return result;
    }
    const auto color = ParseColor(value);
    if (question == "color" && (color || value == "cancel")) {
        result.answer = Color{color};
        return result;
    }
    throw ScriptError(fmt::format(
        "An answer is save=PATH, save=cancel, again=yes, again=no, color=R,G,B,A (four numbers) or "
        "color=cancel, not \"{}\"",
        text));
}

ScriptedPlatform::ScriptedPlatform(DialogScript script)
    : mActions(std::move(script.actions)), mAnswers(script.answers.begin(), script.answers.end()),
      mCancel(script.cancel), mKeepDump(script.dump) {}

void ScriptedPlatform::Fail(const std::string& sentence) {
    if (!mError) mError = sentence;
    throw ScriptError(sentence);
}

void ScriptedPlatform::ShowDialog(DialogModel& dialog, lumui::ui::UI_Node*) {
    try {
        CarryOut(dialog);
    } catch (const ScriptError& error) {
        Fail(error.what());
    }
}

void ScriptedPlatform::CarryOut(DialogModel& dialog) {
    std::vector<Step> steps;
    for (const ScriptedAction& action : mActions) {
        if (!steps.empty() && steps.back().ClosesDialog())
            throw ScriptError(fmt::format("Nothing can follow a press of \"{}\", and \"{}\" does",
                                          mActions[steps.size() - 1].id, action.id));
        steps.emplace_back(dialog, action).Check();
    }
    const Layout& layout = dialog.GetLayout();
    const ScriptedAction last{mCancel ? layout.cancelButton : layout.defaultButton, std::nullopt};
    if (steps.empty() || !steps.back().ClosesDialog()) steps.emplace_back(dialog, last);

    for (const Step& step : steps) {
        if (step.ClosesDialog()) {
            if (!mAnswers.empty())
                throw ScriptError(
                    fmt::format("The answer \"{}\" has no question: the dialog did not ask for it",
                                mAnswers.front().text));
            if (mKeepDump) mDump = DumpDialog(dialog);
        }
        step.Do();
        if (dialog.IsClosed() && !step.ClosesDialog())
            return; // a receiver failed, and `RunDialog` throws that again
    }
}

template <class Answer>
Answer ScriptedPlatform::TakeAnswer(const char* question, const char* form) {
    if (mAnswers.empty())
        Fail(fmt::format("The dialog asks {}, and no answer is left: give {}", question, form));
    const ScriptedAnswer given = std::move(mAnswers.front());
    mAnswers.pop_front();
    const auto* const answer = std::get_if<Answer>(&given.answer);
    if (!answer)
        Fail(fmt::format("The dialog asks {}, which takes {}, not \"{}\"", question, form, given.text));
    return *answer;
}

std::optional<Mosk::String> ScriptedPlatform::RunSaveFileDialog(const SaveFileRequest&) {
    const auto answer = TakeAnswer<ScriptedAnswer::Save>("where to save", "save=PATH or save=cancel");
    if (!answer.path) return std::nullopt;
    return Mosk::FromUTF8(std::filesystem::absolute(*answer.path).lexically_normal().string());
}

std::int32_t ScriptedPlatform::RunMessageBox(const MessageBoxRequest& request) {
    const std::string question = fmt::format("\"{}\"", Mosk::ToUTF8(request.message));
    const auto answer = TakeAnswer<ScriptedAnswer::Again>(question.c_str(), "again=yes or again=no");
    using Box = lumui::dialogs::UI_MessageBox;
    return answer.yes ? Box::kButton_Yes : Box::kButton_No;
}

std::optional<lumui::controls::ColorRGBA> ScriptedPlatform::RunColorPicker(const ColorPickerRequest&) {
    return TakeAnswer<ScriptedAnswer::Color>("for a color", "color=R,G,B,A or color=cancel").color;
}

} // namespace corvane
