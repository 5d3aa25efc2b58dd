/// The dialog's class. Its members are spread over the sources of this folder by subject.
#pragma once

#include <cstdint>
#include <string>

#include "ControlIDs.h"
#include "DataExchange.h"
#include "SynthexInfo.h"
#include "lumcore.h"
#include "lumloom.h"

/// The preferences dialog of one clip. Every handler reads its control and writes the working copy of the
/// settings; the exchange gets that copy when the person saves or presses OK. UI thread.
class ImporterSynthexPrefsDialogImpl : public lumloom::UI_Loom {
  public:
    using Message = lumui::controls::UI_ControlChangedMessage;
    using Handler = void (ImporterSynthexPrefsDialogImpl::*)(Message*);

    /// Takes the settings to edit from the exchange; an empty one throws `Mosk::NullInterfaceException`.
    ImporterSynthexPrefsDialogImpl(const Mosk::String& layoutName,
                                   const lumui::drawbot::SupplierInterface* supplier,
                                   lumui::ui::UI_Node* parent,
                                   Mosk::InterfaceRef<IImporterSynthexPrefsDialogDataExchange> dataExchange);
    ~ImporterSynthexPrefsDialogImpl() override;

    /// Binds the controls to their handlers and gives them their values. Throws the conversion error if the
    /// layout lacks one of them.
    void Initialize() override;

    // What the person does to each control. All of them throw the conversion error if the layout lacks a
    // control that they need.

    // Dialog.cpp
    void OKButtonChanged(Message*);
    void CancelButtonChanged(Message*);

    // FormatControls.cpp
    void FrameWidthChanged(Message*);
    void FrameHeightChanged(Message*);
    void FieldTypePopupChanged(Message*);
    void DurationFramesChanged(Message*);
    void DurationSecondsChanged(Message*);
    void FrameRatePopupChanged(Message*);
    void DrawFrameNumberChanged(Message*);
    void PixelFormatPopupChanged(Message*);
    void PixelAspectPopupChanged(Message*);

    // ColorControls.cpp
    void ColorRenderingChanged(Message*);
    void ChooseColorPopupChanged(Message*);
    void FirstColorButtonChanged(Message*);
    void SecondColorButtonChanged(Message*);
    void FirstColorRedChanged(Message*);
    void FirstColorGreenChanged(Message*);
    void FirstColorBlueChanged(Message*);
    void FirstColorAlphaChanged(Message*);
    void SecondColorRedChanged(Message*);
    void SecondColorGreenChanged(Message*);
    void SecondColorBlueChanged(Message*);
    void SecondColorAlphaChanged(Message*);

    // Save.cpp
    void UseAsCustomImporterChanged(Message*);
    void SaveToPathButtonChanged(Message*);
    void SaveButtonChanged(Message*);

  private:
    /// The control of that identifier; one of another class, or none, raises "Invalid type conversion.".
    template <class Control>
    lumui::ui::UI_NodePtr<Control> Get(ControlID<Control> id) const {
        static constexpr char kKey[] =
            "$$$/lumcore/utility/Error/InvalidTypeConversion=Invalid type conversion.";
        const auto node = GetUINodePtr(id.text, true);
        return lumui::ui::UI_NodePtr<Control>(
            lumcore::utility::NonOptionalDynamicCast<Control>(node.get(), kKey, 105, 21));
    }

    // Dialog.cpp
    class SettingScope;
    template <class Control>
    void Bind(ControlID<Control> id, Handler handler);
    friend struct Binding;

    // InitialValues.cpp
    void InitDialogValues();
    void InitFieldTypePopup();
    void InitVideoFrameRatePopup();
    void InitFrameWidthHeight();
    void InitPixelFormatPopup();
    void InitPixelAspectPopup();
    void InitSaveAsData();

    // FormatControls.cpp
    static double ToSeconds(lummediatypes::TickTime time);
    void UpdateFieldColorChoicesUI();
    void ConstrainUIToPixelFormat();

    // ColorControls.cpp
    void SetupColorChoiceControls();
    void SetupColorButtonChoiceNames();
    void SetupColorTextDisplay();
    void SetColorFromControl(const std::string& id);
    void ChooseColor(int slot);
    void DisplayColorPicker(lumui::controls::ColorRGBA& color);

    // Save.cpp
    std::int32_t DisplaySaveSynthexDialog();
    std::int32_t SaveFileData(const Mosk::String& path);

    lumui::ui::UI_NodePtr<lumui::ui::UI_Node> mDialogNode; // stays empty
    Mosk::InterfaceRef<IImporterSynthexPrefsDialogDataExchange> mDataExchange;
    SynthexInfo mSynthexInfo;
    bool mInitialized = false;
    bool mIsSetting = false; ///< while the initialization or a handler runs
};
