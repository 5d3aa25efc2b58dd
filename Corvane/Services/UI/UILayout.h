/// The layout script: what a dialog is made of, as a tree that a platform turns into widgets.
///
/// A script is XML with a `dialog` at the top. Texts are for people; in those of labels, check boxes and
/// buttons an underscore marks the letter that Alt reaches them by ("_Width"), two give one. Tab goes from
/// control to control in the order of the script.
///
///     <dialog title="..." default="ID" cancel="ID">       which button Return, and Esc, presses
///       <group text="Frame">                              a titled frame around its children
///         <row>                                           children side by side, in columns that rows share
///           <label text="_Width" for="widthID"/>          names a control; its letter goes to the control
///           <number id="widthID" unit="px" min="1" max="32768" step="1" decimals="0" tip="..."/>
///         </row>
///
/// `popup` (id, tip), `number` (id, unit, min, max, step, decimals, tip; a missing limit is none), `checkbox`
/// (id, text, checked, tip), `button` and `textbutton` (id, text, swatch, tip), `statictext` (id, text).
/// `swatch` names four numbers (red, green, blue, alpha) whose color the button shows beside its title.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Mosk.h"

namespace corvane {

/// What a part of a layout is. Those after `kLabel` are controls.
enum class WidgetKind { kGroup, kRow, kLabel, kPopup, kNumber, kCheckbox, kButton, kTextButton, kStaticText };

/// Whether it is a button of either kind. Any thread.
constexpr bool IsButton(WidgetKind kind) {
    return kind == WidgetKind::kButton || kind == WidgetKind::kTextButton;
}

/// Decimal text as a finite number, whatever the locale; nothing if the text is anything else. Any thread.
std::optional<double> ParseFiniteNumber(std::string_view text);

/// What a person may enter into a number, and how it is shown.
struct NumberLimits {
    std::optional<double> minimum, maximum; ///< both included
    double step = 1;                        ///< of the arrow keys and buttons
    /// Digits shown after the point. Entries may have more, but if none are shown they are whole numbers.
    int decimals = 0;

    /// `value`, or the nearest number that may be entered.
    double Hold(double value) const;
    /// Whether `value` may be entered.
    bool Holds(double value) const { return Hold(value) == value; }
};

/// A text with the place of its mnemonic.
struct LabelText {
    Mosk::String text;                   ///< without the mark
    std::optional<std::size_t> mnemonic; ///< index of the marked letter in `text`
};

/// One part of a layout, with those that lie in it in the order of the script.
struct LayoutNode {
    WidgetKind kind{};
    std::string id; ///< of controls; empty for groups, rows and labels
    LabelText label;
    Mosk::String tip;                ///< for a tooltip; may be empty
    Mosk::String unit;               ///< of a number; may be empty
    NumberLimits limits;             ///< of a number
    bool checked = false;            ///< of a check box: how it begins
    std::string target;              ///< of a label: the control it names; may be empty
    std::vector<std::string> swatch; ///< of a button: empty, or the four numbers
    std::vector<LayoutNode> children;

    bool IsControl() const { return kind > WidgetKind::kLabel; }
};

/// A whole dialog.
struct Layout {
    Mosk::String name; ///< the name in the host's resources, for messages
    Mosk::String title;
    std::string defaultButton; ///< what Return presses
    std::string cancelButton;  ///< what Esc and the window's close button press
    std::vector<LayoutNode> children;
};

/// A script that can't be used. The text reads "layout NAME, line N: expected ..., found ...".
class LayoutError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads a script. `name` is the layout's, for messages. Throws `LayoutError` if the script can't be used.
/// Any thread.
Layout ParseLayout(std::string_view script, const Mosk::String& name);

} // namespace corvane
