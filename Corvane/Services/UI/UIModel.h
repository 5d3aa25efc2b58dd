/// The toolkit's controls without a widget in sight: what they hold, what a person may do to them, and who is
/// told.
///
/// The plug-in reaches these objects through the contract (lumui.h); a platform reaches them here, shows
/// them, and reports what the person does by the dialog's `Press`, `Enter`, `Choose`, `Check` and `Dismiss`.
/// UI thread only.
#pragma once

#include <cstddef>
#include <exception>
#include <map>
#include <string>
#include <vector>

#include "UILayout.h"
#include "lumui.h"

namespace corvane {

class ControlModel;
class DialogModel;

/// What changed in a control.
enum class ControlAspect { kValue, kTitle, kItems, kEnabled };

/// Who changed it.
enum class ChangeOrigin { kProgram, kPerson };

/// Told of every change in a dialog, so that its widgets keep up.
class DialogObserver {
  public:
    virtual ~DialogObserver() = default;
    /// Called after each change. A person's number may have been held to its limits, so the control can hold
    /// something else than was entered.
    virtual void ControlChanged(const ControlModel& control, ControlAspect aspect, ChangeOrigin origin) = 0;
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
    /// The same control by its contract.
    virtual lumui::controls::UI_ControlView& GetView() = 0;

  protected:
    ControlModel(DialogModel& dialog, const LayoutNode& layout);

    void AddReceiver(const lumui::ui::MessageFunctionPtr& receiver) { mReceivers.push_back(receiver); }
    void SetEnabled(bool enabled);
    void Report(ControlAspect aspect, ChangeOrigin origin = ChangeOrigin::kProgram);

  private:
    friend class DialogModel;

    DialogModel* mDialog;     // null once the dialog has gone
    const LayoutNode mLayout; // a copy: a control may outlive the dialog
    std::vector<lumui::ui::MessageFunctionPtr> mReceivers;
    bool mEnabled = true;
    LiveNode mLive;
};

/// A control of the contract's class `Interface`.
template <class Interface>
class ControlOf : public Interface, public ControlModel {
  public:
    ControlOf(DialogModel& dialog, const LayoutNode& layout) : ControlModel(dialog, layout) {}

    void NotifyWhenChanged(const lumui::ui::MessageFunctionPtr& receiver) override { AddReceiver(receiver); }
    void SetDisabled(bool disabled) override { SetEnabled(!disabled); }
    lumui::controls::UI_ControlView& GetView() override { return *this; }
};

class PopupModel final : public ControlOf<lumui::controls::UI_Popup> {
  public:
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

    const std::vector<Item>& GetItems() const { return mItems; }
    bool HasItem(long index) const { return index >= 0 && static_cast<std::size_t>(index) < mItems.size(); }

  private:
    friend class DialogModel;
    std::vector<Item> mItems;
    long mValue = -1;
};

class NumberModel final : public ControlOf<lumui::controls::UI_NumberEdit> {
  public:
    using ControlOf::ControlOf;
    void SetValue(double value) override;
    double GetValue() const override { return mValue; }

  private:
    friend class DialogModel;
    double mValue = 0;
};

class CheckboxModel final : public ControlOf<lumui::controls::UI_Checkbox> {
  public:
    CheckboxModel(DialogModel& dialog, const LayoutNode& layout)
        : ControlOf(dialog, layout), mChecked(layout.checked) {}
    void SetChecked(bool checked) override;
    bool IsChecked() const override { return mChecked; }
    long GetValue() const override { return mChecked ? 1 : 0; }

  private:
    friend class DialogModel;
    bool mChecked;
};

class ButtonModel final : public ControlOf<lumui::controls::UI_Button> {
  public:
    using ControlOf::ControlOf;
};

class TextButtonModel final : public ControlOf<lumui::controls::UI_TextButton> {
  public:
    TextButtonModel(DialogModel& dialog, const LayoutNode& layout)
        : ControlOf(dialog, layout), mTitle(layout.label.text) {}
    void SetText(const Mosk::String& title) override;
    /// The title as it stands now; it has no mnemonic once the program has set it.
    const Mosk::String& GetTitle() const { return mTitle; }

  private:
    Mosk::String mTitle;
};

class StaticTextModel final : public ControlOf<lumui::controls::UI_StaticText> {
  public:
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

/// The title of a button of either kind.
const Mosk::String& GetButtonTitle(const ControlModel& button);

/// A dialog: its layout, its controls, and what a person does in it.
///
/// The operations of a person ignore what a person can't do (a control that is disabled, an item that is, any
/// control after the dialog was closed), so a platform need not check first. They return whether the
/// operation was done. What the plug-in throws in answer does not come out of them: it closes the dialog, and
/// the toolkit throws it on when the platform's modal run has returned, so a platform whose event loop can't
/// carry exceptions needs to do nothing.
class DialogModel final : public lumui::ui::UI_DialogView {
  public:
    /// Builds the controls. `window` is where the dialog's own dialogs belong, and may be null.
    DialogModel(Layout layout, lumui::ui::UI_Node* window);
    ~DialogModel() override;

    const Layout& GetLayout() const { return mLayout; }
    /// The controls in the order of the script. They live as long as the dialog.
    const std::vector<ControlModel*>& GetControls() const { return mOrder; }
    /// A control, or null where the layout has none of that identifier.
    ControlModel* Find(const std::string& id) const;

    void Close() override;
    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> GetWindow() const override { return mWindow; }
    bool IsClosed() const { return mClosed; }

    /// One observer at a time: the platform that shows the dialog. Null for none.
    void SetObserver(DialogObserver* observer) { mObserver = observer; }

    // --- What a person does ---

    /// Presses a button.
    bool Press(ControlModel& button);
    /// Enters a finite number, which is held to the layout's limits. Entering the number that the control
    /// holds already is no change.
    bool Enter(NumberModel& number, double value);
    /// Chooses an item. Choosing the chosen item again is no change.
    bool Choose(PopupModel& popup, long index);
    /// Checks a box or clears it.
    bool Check(CheckboxModel& box, bool checked);
    /// Esc or the window's close button: presses the cancel button, and closes the dialog where that is
    /// disabled.
    void Dismiss();

    // --- For the toolkit ---

    /// Sends the change message of a control to its receivers.
    void Deliver(ControlModel& control);
    /// Throws on what a receiver threw, if one did.
    void RethrowFailure();

  private:
    friend class ControlModel;
    void Build(const std::vector<LayoutNode>& nodes);
    void Add(const LayoutNode& node);

    Layout mLayout;
    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> mWindow;
    std::map<std::string, lumui::ui::UI_NodePtr<lumui::controls::UI_ControlView>> mNodes;
    std::vector<ControlModel*> mOrder;
    DialogObserver* mObserver = nullptr;
    std::exception_ptr mFailure;
    bool mClosed = false;
    LiveNode mLive;
};

} // namespace corvane
