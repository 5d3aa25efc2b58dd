/// The preferences dialog, as the importer sees it.
#pragma once

#include "Mosk.h"
#include "lumui.h"

/// Names the dialog to `HandleImporterSynthexPrefsDialog`.
extern const Mosk::String kImporterSynthexPrefsDialogID;

/// Runs the dialog modally on the settings in a data exchange (`IImporterSynthexPrefsDialogDataExchange`) and
/// returns when it has closed. UI thread.
///
/// The outcome is in the exchange: OK hands the edited settings over, Cancel marks the exchange as cancelled.
/// Another identifier than the dialog's, or an object that is no exchange, raises the contract error and
/// shows nothing. Without a layout script in the bundle nothing happens at all.
void HandleImporterSynthexPrefsDialog(const Mosk::String& inDialogID, Mosk::MoskUnknownRef inDataExchange,
                                      const lumui::drawbot::SupplierInterface* inDrawSupplier,
                                      lumui::ui::UI_Node* inParent);
