/// The host's UI toolkit: nodes, controls, messages, and the small modal dialogs.
///
/// Everything here belongs to the host's UI thread: it is made, used and released there, and messages are
/// delivered there one at a time. A modal run (`RunModal`) returns when its window has closed; messages of
/// the windows below it are not delivered in the meantime.
///
/// Texts are UTF-16 and shown as they are. Identifiers are narrow strings, unique within one layout.
///
/// Controls are made by the toolkit from a layout script (see lumloom.h); a plug-in looks them up by their
/// identifiers. What a plug-in sets is shown at once and raises no message: a change message tells of a
/// person's edit, and of nothing else.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <boost/bind/bind.hpp>
#include <boost/function.hpp>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include "Mosk.h"
#include "lumcore.h"

namespace lumui::drawbot {

/// What windows draw with. A plug-in hands it on and never calls it. Owned by the host.
class SupplierInterface {
  public:
    virtual ~SupplierInterface() = default;
};

} // namespace lumui::drawbot

namespace lumui::ui {

/// A part of the user interface: a window, a view or a control. Counted; deleted with its last reference.
class UI_Node {
  public:
    UI_Node() = default;
    UI_Node(const UI_Node&) = delete;
    UI_Node& operator=(const UI_Node&) = delete;
    virtual ~UI_Node() = default;

  private:
    friend void intrusive_ptr_add_ref(UI_Node* node) noexcept { ++node->mReferences; }
    friend void intrusive_ptr_release(UI_Node* node) noexcept {
        if (--node->mReferences == 0) delete node;
    }

    std::int32_t mReferences = 0; // one thread, so a plain count
};

/// A counted reference to a node; may be empty.
template <class Node>
using UI_NodePtr = boost::intrusive_ptr<Node>;

/// Makes a counted node.
template <class Node, class... Arguments>
UI_NodePtr<Node> MakeNode(Arguments&&... arguments) {
    return UI_NodePtr<Node>(new Node(std::forward<Arguments>(arguments)...));
}

/// The view of a dialog: what its controls lie in.
class UI_DialogView : public UI_Node {
  public:
    /// Ends the modal run of the dialog, which returns once the message being delivered has been handled. A
    /// second call does nothing.
    virtual void Close() = 0;
    /// The window that holds the view, as the parent of further dialogs; empty while the host shows no
    /// window.
    virtual UI_NodePtr<UI_Node> GetWindow() const = 0;
};

/// The base of all messages. A message lives for the length of its delivery.
class UI_Message {
  public:
    virtual ~UI_Message() = default;
};

/// A receiver of messages.
using MessageFunction = boost::function<void(UI_Message*)>;
/// A share in a receiver.
using MessageFunctionPtr = boost::shared_ptr<MessageFunction>;

namespace detail {

/// Takes a generic message as `Message` and hands it on.
template <class Receiver, class Message>
void Deliver(Receiver* receiver, void (Receiver::*handler)(Message*), UI_Message* message) {
    static constexpr char kKey[] = "$$$/lumcore/utility/Error/InvalidTypeConversion=Invalid type conversion.";
    (receiver->*handler)(lumcore::utility::NonOptionalDynamicCast<Message>(message, kKey, 105, 21));
}

} // namespace detail

/// Makes a receiver of a member function. `receiver` is not owned and must outlive the deliveries. A message
/// of another class raises the error "Invalid type conversion." at delivery, at level 1.
template <class Receiver, class Message>
MessageFunctionPtr BindMessageFunction(void (Receiver::*handler)(Message*), Receiver* receiver) {
    return boost::make_shared<MessageFunction>(
        boost::bind(&detail::Deliver<Receiver, Message>, receiver, handler, boost::placeholders::_1));
}

/// The toolkit's own services. One per process.
class UI_NodeManager {
  public:
    /// The manager. It exists as long as the host runs; `create` matters only to the host while it starts.
    static UI_NodeManager* Get(bool create);
    /// What windows draw with unless something else is asked for. Never null; the host's.
    const drawbot::SupplierInterface* GetDefaultDrawSupplier() const;
};

} // namespace lumui::ui

namespace lumui::controls {

/// The base of all controls.
class UI_ControlView : public ui::UI_Node {
  public:
    /// Adds a receiver of this control's `UI_ControlChangedMessage`s. Receivers are called in the order in
    /// which they were added, after the control has taken the new value. The control keeps its share until it
    /// goes.
    virtual void NotifyWhenChanged(const ui::MessageFunctionPtr& receiver) = 0;
    /// Grays the control out, so that no person can use it, or makes it usable again. Enabled at first.
    virtual void SetDisabled(bool disabled) = 0;
};

/// A person changed a control, or pressed a button.
class UI_ControlChangedMessage : public ui::UI_Message {
  public:
    /// `control` is not owned and outlives the message.
    explicit UI_ControlChangedMessage(UI_ControlView* control) : mControl(control) {}
    /// The control; valid during the delivery.
    UI_ControlView* GetControl() const { return mControl; }

  private:
    UI_ControlView* mControl;
};

/// A list of items of which one is chosen. Items are counted from 0 in the order in which they were added.
class UI_Popup : public UI_ControlView {
  public:
    /// Appends an enabled item. The choice stays as it is.
    virtual void AddItem(const Mosk::String& text) = 0;
    /// Whether there are items.
    virtual bool HasItems() const = 0;
    /// Chooses an item, a disabled one included. Any index that names no item leaves nothing chosen.
    virtual void SetValue(long index) = 0;
    /// The index of the chosen item; -1 if none is (at first).
    virtual long GetValue() const = 0;
    /// Makes all items available to people.
    virtual void EnableAllItems() = 0;
    /// Grays an item out (`disabled` true), so that no person can choose it, or makes it available. An index
    /// that names no item is ignored.
    virtual void DisableItem(long index, bool disabled) = 0;
};

/// A field for a number. A person's entries are held to the limits that the layout sets; the program's are
/// not.
class UI_NumberEdit : public UI_ControlView {
  public:
    /// Shows `value`, rounded as the layout says; the number itself is kept exactly.
    virtual void SetValue(double value) = 0;
    /// The number last set, exactly, or last entered by a person.
    virtual double GetValue() const = 0;
};

/// A box that is checked or not.
class UI_Checkbox : public UI_ControlView {
  public:
    /// Checks the box or clears it; clear at first.
    virtual void SetChecked(bool checked) = 0;
    /// Whether the box is checked.
    virtual bool IsChecked() const = 0;
    /// 1 if the box is checked, else 0.
    virtual long GetValue() const = 0;
};

/// A button. Its change message tells that it was pressed.
class UI_Button : public UI_ControlView {};

/// A button whose title the program sets.
class UI_TextButton : public UI_Button {
  public:
    /// Sets the title; an empty one is allowed.
    virtual void SetText(const Mosk::String& title) = 0;
};

/// How a text that is wider than its place is shortened.
enum class TextTruncation : std::int32_t { kNone = 0, kEnd = 1, kStart = 2, kMiddle = 3 };

/// A line of text that people read and do not edit.
class UI_StaticText : public UI_ControlView {
  public:
    /// Sets the text; an empty one is allowed.
    virtual void SetValue(const Mosk::String& text) = 0;
    /// Says where the text is shortened when it does not fit. `kEnd` at first; for paths `kMiddle`, which
    /// keeps both the drive or home folder and the file's name in sight.
    virtual void SetTruncation(TextTruncation truncation) = 0;
};

/// A color as people see it: straight alpha, components nominally 0 to 1, not clamped.
struct ColorRGBA {
    float mRed = 0, mGreen = 0, mBlue = 0, mAlpha = 1;
};

/// The host's color picker.
class ColorPickerDialog : public ui::UI_Node {
  public:
    /// `liveUpdates` asks for messages while the person is choosing; this project never does.
    ColorPickerDialog(const drawbot::SupplierInterface* supplier, ui::UI_Node* parent, bool liveUpdates);

    /// The color to begin with. Black at first.
    void SetColor(const ColorRGBA& color) { mColor = color; }
    /// Shows the picker and returns when it has closed.
    void RunModal();
    /// Whether the last run ended with a color that the person accepted.
    bool IsAccepted() const { return mAccepted; }
    /// The accepted color, else the one to begin with.
    ColorRGBA GetColor() const { return mColor; }

  private:
    ui::UI_NodePtr<ui::UI_Node> mParent;
    ColorRGBA mColor;
    bool mAccepted = false;
};

} // namespace lumui::controls

namespace lumui::dialogs {

/// One kind of file that a file dialog offers.
struct FileDialogFilterInfo {
    Mosk::String mDescription;      ///< for people, as in "Text Files"
    Mosk::String mExtension;        ///< what files of the kind end in, without the dot
    Mosk::String mDefaultExtension; ///< what a name typed without one gets
};

/// Flag of file dialogs: ask before an existing file is chosen for replacement.
inline constexpr std::uint32_t kFileDialog_ConfirmReplace = 2;

/// `OS_FileSaveAsDialog::GetOutcome`: the person confirmed a path.
inline constexpr std::int32_t kFileDialogOutcome_Confirmed = 1;

/// The system's dialog that asks where to save a file.
class OS_FileSaveAsDialog {
  public:
    /// `parent` may be null. `filterIndex` says which of the `filters` is chosen at first, `defaultName`
    /// which file name is offered.
    OS_FileSaveAsDialog(ui::UI_Node* parent, const std::vector<FileDialogFilterInfo>& filters,
                        unsigned long filterIndex, const Mosk::String& defaultName,
                        lumcore::utility::Flags<unsigned int> flags);

    /// How the last run ended: `kFileDialogOutcome_Confirmed`, or 0 if it was cancelled.
    virtual std::int32_t GetOutcome() const;
    /// The confirmed file; without a confirmed run its path is empty.
    virtual lumcore::filesupport::File GetChosenFile() const;
    virtual ~OS_FileSaveAsDialog();

    /// Shows the dialog and returns when it has closed. Throws what the host's platform throws if it can't be
    /// shown.
    void RunModal();

  private:
    ui::UI_NodePtr<ui::UI_Node> mParent;
    std::vector<FileDialogFilterInfo> mFilters;
    unsigned long mFilterIndex;
    Mosk::String mDefaultName;
    lumcore::utility::Flags<unsigned int> mFlags;
    Mosk::String mChosenPath;
    bool mConfirmed = false;
};

/// A question with up to a handful of buttons.
class UI_MessageBox {
  public:
    /// The buttons, as bits: a box has those of its `buttons` value.
    enum Button : std::int32_t { kButton_Yes = 16, kButton_No = 64 };
    /// What the box is about.
    enum Icon : std::int32_t { kIcon_None = 0, kIcon_Warning = 1 };

    /// `parent` may be null. `flags`, `left` and `top` are 0 for a box that the host places; `callback`
    /// may be null, and gets no message of this project's boxes.
    UI_MessageBox(const drawbot::SupplierInterface* supplier, const Mosk::String& title,
                  const Mosk::String& message, int buttons, Button defaultButton, Icon icon,
                  ui::UI_Node* parent, unsigned int flags, float left, float top,
                  const ui::MessageFunctionPtr& callback);

    /// Shows the box and returns when a button was pressed. Esc and the window's close button press "No".
    void RunModal();
    /// The button that ended the last run.
    std::int32_t GetResponse() const { return mResponse; }

  private:
    Mosk::String mTitle, mMessage;
    int mButtons;
    Button mDefaultButton;
    Icon mIcon;
    ui::UI_NodePtr<ui::UI_Node> mParent;
    std::int32_t mResponse = 0;
};

} // namespace lumui::dialogs
