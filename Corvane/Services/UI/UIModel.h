/// The toolkit's controls without a widget in sight: what they hold, what a person may do to them, and who is
/// told.
///
/// The plug-in reaches these objects through the contract (lumui.h); a platform reaches them here, shows
/// them, and reports what the person does by the dialog's `Press`, `Enter`, `Choose`, `Check` and `Dismiss`.
///
/// Whoever does something else with each class of controls takes `ControlModel::AsClass` apart with
/// `std::visit`: the compiler then points at every place that a new class is missing from.
///
/// UI thread only. Nothing here throws but where it says so.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <variant>
#include <vector>

#include "UILayout.h"
#include "lumui.h"

namespace corvane {

class ControlModel;
class DialogModel;
class PopupModel;
class NumberModel;
class CheckboxModel;
class ButtonModel;
class TextButtonModel;
class StaticTextModel;

/// A control as what it is. The classes that there are, once.
using ControlClass =
    std::variant<PopupModel*, NumberModel*, CheckboxModel*, ButtonModel*, TextButtonModel*, StaticTextModel*>;

/// One function per class of controls, for `std::visit`.
template <class... Functions>
struct PerClass : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
PerClass(Functions...) -> PerClass<Functions...>;

/// What changed in a control.
enum class ControlAspect {
    kValue,  ///< of a static text, also how it is shortened
    kTitle,  ///< of a button
    kItems,  ///< of a popup: the items themselves, or which of them are enabled
    kEnabled ///< whether the control is
};

/// Told of every change in a dialog, so that its widgets keep up.
class DialogObserver {
  public:
    virtual ~DialogObserver() = default;
    /// Called after each change, by the program or by a person. A person's number may have been held to its
    /// limits, so that the control holds something else than what was entered.
    virtual void ControlChanged(const ControlModel& control, ControlAspect aspect) = 0;
    /// The dialog was closed: the modal run is to end.
    virtual void DialogClosed() = 0;
};

/// Counts itself while it lives; see `CountLiveNodes`.
class LiveNode {
  public:
    LiveNode();
    ~LiveNode();
    LiveNode(const LiveNode&) = delete;
    LiveNode& operator=(const LiveNode&) = delete;
};

/// What all controls have in common.
class ControlModel {
  public:
    ControlModel(const ControlModel&) = delete;
    ControlModel& operator=(const ControlModel&) = delete;
    virtual ~ControlModel() = default;

    const std::string& GetID() const { return mLayout.id; }
    const LayoutNode& GetLayout() const { return mLayout; }
    bool IsEnabled() const { return mEnabled; }
    /// What is written on a button or beside a check box: the layout's text, or what the program has set.
    virtual const Mosk::String& GetTitle() const { return mLayout.label.text; }
    /// The same control by its contract.
    virtual lumui::controls::UI_ControlView& GetView() = 0;
    /// The same control as what it is.
    virtual ControlClass AsClass() = 0;

  protected:
    ControlModel(DialogModel& dialog, const LayoutNode& layout);

    void AddReceiver(const lumui::ui::MessageFunctionPtr& receiver) { mReceivers.push_back(receiver); }
    void SetEnabled(bool enabled);
    void Report(ControlAspect aspect);
    /// Reports a value that the program has set.
    void ReportSetValue();

  private:
    friend class DialogModel;

    DialogModel* mDialog;     // null once the dialog has gone
    const LayoutNode mLayout; // a copy: a control may outlive the dialog
    std::vector<lumui::ui::MessageFunctionPtr> mReceivers;
    bool mEnabled = true;
    LiveNode mLive;
};

/// A control of the contract's class `Interface`; `Model` is the class that derives from this.
template <class Model, class Interface>
class ControlOf : public Interface, public ControlModel {
  public:
    ControlOf(DialogModel& dialog, const LayoutNode& layout) : ControlModel(dialog, layout) {}

    void NotifyWhenChanged(const lumui::ui::MessageFunctionPtr& receiver) override { AddReceiver(receiver); }
    void SetDisabled(bool disabled) override { SetEnabled(!disabled); }
    lumui::controls::UI_ControlView& GetView() override { return *this; }
    ControlClass AsClass() override { return static_cast<Model*>(this); }
};

/// A list of items of which one is chosen, or none (-1).
class PopupModel final : public ControlOf<PopupModel, lumui::controls::UI_Popup> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kPopup;

    struct Item {
        Mosk::String text;
        bool enabled = true;
    };

    using ControlOf::ControlOf;
    void AddItem(const Mosk::String& text) override;
    bool HasItems() const override { return !mItems.empty(); }
    void SetValue(long index) override;
    long GetValue() const override { return mValue; }
    void EnableAllItems() override;
    void DisableItem(long index, bool disabled) override;

    /// The items, to be chosen by their index.
    const std::vector<Item>& GetItems() const { return mItems; }
    bool HasItem(long index) const { return index >= 0 && static_cast<std::size_t>(index) < mItems.size(); }

  private:
    friend class DialogModel;
    std::vector<Item> mItems;
    long mValue = -1;
};

/// A number. It is held to the layout's limits when a person enters it, not when the program sets it.
class NumberModel final : public ControlOf<NumberModel, lumui::controls::UI_NumberEdit> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kNumber;

    using ControlOf::ControlOf;
    void SetValue(double value) override;
    double GetValue() const override { return mValue; }

  private:
    friend class DialogModel;
    double mValue = 0;
};

/// A box that is checked or not; at first, as the layout says.
class CheckboxModel final : public ControlOf<CheckboxModel, lumui::controls::UI_Checkbox> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kCheckbox;

    CheckboxModel(DialogModel& dialog, const LayoutNode& layout)
        : ControlOf(dialog, layout), mChecked(layout.checked) {}
    void SetChecked(bool checked) override;
    bool IsChecked() const override { return mChecked; }
    long GetValue() const override { return mChecked ? 1 : 0; }

  private:
    friend class DialogModel;
    bool mChecked;
};

/// A button with the layout's title.
class ButtonModel final : public ControlOf<ButtonModel, lumui::controls::UI_Button> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kButton;

    using ControlOf::ControlOf;
};

/// A button whose title the program may change; it has no mnemonic after that.
class TextButtonModel final : public ControlOf<TextButtonModel, lumui::controls::UI_TextButton> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kTextButton;

    TextButtonModel(DialogModel& dialog, const LayoutNode& layout)
        : ControlOf(dialog, layout), mTitle(layout.label.text) {}
    void SetText(const Mosk::String& title) override;
    const Mosk::String& GetTitle() const override { return mTitle; }

  private:
    Mosk::String mTitle;
};

/// A text to read, and where it may be shortened if there is no room for it.
class StaticTextModel final : public ControlOf<StaticTextModel, lumui::controls::UI_StaticText> {
  public:
    static constexpr WidgetKind kKind = WidgetKind::kStaticText;

    StaticTextModel(DialogModel& dialog, const LayoutNode& layout)
        : ControlOf(dialog, layout), mText(layout.label.text) {}
    void SetValue(const Mosk::String& text) override;
    void SetTruncation(lumui::controls::TextTruncation truncation) override;
    const Mosk::String& GetText() const { return mText; }
    lumui::controls::TextTruncation GetTruncation() const { return mTruncation; }

  private:
    Mosk::String mText;
    lumui::controls::TextTruncation mTruncation = lumui::controls::TextTruncation::kEnd;
};

/// A dialog: its layout, its controls, and what a person does in it.
///
/// The operations of a person ignore what a person can't do (with a control or an item that is disabled, or
/// with any control once the dialog is closed), so a platform need not check first. They return whether the
/// operation was done. What the plug-in throws in answer does not come out of them: it closes the dialog, and
/// `UI_Platform::RunDialog` throws it again after the modal run, so that no exception has to pass through a
/// platform's event loop.
class DialogModel final : public lumui::ui::UI_DialogView {
  public:
    /// Builds the controls. `window` is where the dialog's own dialogs belong, and may be null.
    DialogModel(Layout layout, lumui::ui::UI_Node* window);
    ~DialogModel() override;

    const Layout& GetLayout() const { return mLayout; }
    /// The controls in the order of the script. They live as long as the dialog.
    const std::vector<ControlModel*>& GetControls() const { return mOrder; }
    /// A control, or null if the layout has none with that identifier.
    ControlModel* Find(const std::string& id) const;

    void Close() override;
    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> GetWindow() const override { return mWindow; }
    bool IsClosed() const { return mClosed; }

    /// One observer at a time: the platform that shows the dialog. Null for none.
    void SetObserver(DialogObserver* observer) { mObserver = observer; }

    // What a person does.

    /// Presses a button.
    bool Press(ControlModel& button);
    /// Enters a finite number, which is held to the layout's limits. Entering the number that the control
    /// holds already is no change.
    bool Enter(NumberModel& number, double value);
    /// Chooses an item. The choice counts even if the item is shown already: it may stand for a setting that
    /// no item has.
    bool Choose(PopupModel& popup, long index);
    /// Checks a box or clears it.
    bool Check(CheckboxModel& box, bool checked);
    /// Esc or the window's close button: presses the cancel button, or just closes the dialog if that is
    /// disabled.
    void Dismiss();

    // For the toolkit.

    /// Sends the change message of a control to its receivers.
    void Deliver(ControlModel& control);
    /// Throws again what a receiver threw, if one did.
    void RethrowFailure();

  private:
    friend class ControlModel;
    void Build(const std::vector<LayoutNode>& nodes);
    template <class Model>
    bool AddIfKind(const LayoutNode& node);
    template <class... Models>
    void Add(const LayoutNode& node, std::variant<Models*...> classes);

    Layout mLayout;
    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> mWindow;
    std::vector<lumui::ui::UI_NodePtr<lumui::controls::UI_ControlView>> mNodes; // keep the controls alive
    std::vector<ControlModel*> mOrder;
    DialogObserver* mObserver = nullptr;
    std::exception_ptr mFailure;
    bool mClosed = false;
    LiveNode mLive;
};

} // namespace corvane
