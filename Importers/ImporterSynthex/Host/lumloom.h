/// Dialogs that the host builds from a layout script.
///
/// The script is XML; the bench's `UILayout.h` tells which elements and attributes it may hold. UI thread
/// only.
#pragma once

#include <memory>
#include <sstream>
#include <string>

#include <boost/shared_ptr.hpp>

#include "Mosk.h"
#include "lumui.h"

namespace lumloom {

/// The base of a dialog whose layout comes from a script. The order of the virtual operations is the binary
/// interface.
class UI_Loom {
  public:
    /// `layoutName` names the layout in error messages. `supplier` and `parent` (which may be null) are the
    /// host's and outlive the dialog.
    UI_Loom(const Mosk::String& layoutName, const lumui::drawbot::SupplierInterface* supplier,
            lumui::ui::UI_Node* parent);
    /// Gives up the dialog's controls.
    virtual ~UI_Loom();
    UI_Loom(const UI_Loom&) = delete;
    UI_Loom& operator=(const UI_Loom&) = delete;

    /// Called once when the layout has been built and before anything is shown: the place to bind the
    /// controls and to give them their values. An exception leaves `ParseLoomScript`; no dialog is shown
    /// then.
    virtual void Initialize();
    /// Called when the modal run has ended normally, while the controls still exist.
    virtual void Destruction();
    /// Called between `Initialize` and the modal run.
    virtual void SetupPostCloseCallback();
    /// The script of a layout that this one refers to; none by default.
    virtual boost::shared_ptr<std::stringstream> GetLayoutStream(const Mosk::String& layoutName);

    /// Builds the dialog from a script, calls `Initialize`, runs the dialog modally and returns after the
    /// view has been closed. With `buildOnly` nothing is shown, and the controls stay until the dialog goes.
    ///
    /// A script that is not well-formed, or that has an element, an attribute or a value that the toolkit
    /// does not know, throws `std::runtime_error` whose text names the layout and the line, what was expected
    /// and what was found; nothing is built then. An exception that a receiver of messages throws closes the
    /// dialog and leaves this function.
    void ParseLoomScript(std::stringstream& script, bool buildOnly);

    /// The dialog's view; empty before the layout has been built and after the dialog has closed.
    lumui::ui::UI_NodePtr<lumui::ui::UI_DialogView> GetView() const;

    /// The node with that identifier, or an empty reference if the layout has none. `deep` searches the
    /// whole layout, else only what lies directly in the dialog.
    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> GetUINodePtr(const std::string& id, bool deep) const;

    /// The draw supplier given at construction; the host's.
    const lumui::drawbot::SupplierInterface* GetDrawSupplier() const;

  private:
    struct Implementation;
    std::unique_ptr<Implementation> mImplementation;
};

} // namespace lumloom
