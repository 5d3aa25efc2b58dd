/// The controls of the layout script, each with its class.
#pragma once

#include "lumui.h"

/// A control's identifier, and the class that its node must have.
template <class Control>
struct ControlID {
    const char* text;

    /// The same control as one of a base class.
    template <class Base>
    constexpr ControlID<Base> As() const {
        return {text};
    }
};

inline constexpr ControlID<lumui::controls::UI_Popup> kPixelFormatPopup{"pixelFormatPopupID"};
inline constexpr ControlID<lumui::controls::UI_Popup> kPixelAspectPopup{"pixelAspectPopupID"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kFrameWidth{"frameWidthID"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kFrameHeight{"frameHeightID"};
inline constexpr ControlID<lumui::controls::UI_Popup> kFieldTypePopup{"fieldTypePopupID"};

inline constexpr ControlID<lumui::controls::UI_Popup> kFrameRatePopup{"frameRatePopupID"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kDurationSeconds{"durationSecondsTextID"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kDurationFrames{"durationFramesTextID"};
inline constexpr ControlID<lumui::controls::UI_Checkbox> kDrawFrameNumber{"drawFrameNumberCBID"};

inline constexpr ControlID<lumui::controls::UI_Popup> kColorRenderingPopup{"colorRenderingTypePopupID"};
inline constexpr ControlID<lumui::controls::UI_Popup> kChooseColorPopup{"chooseColorPopupID"};
inline constexpr ControlID<lumui::controls::UI_TextButton> kColorButton0{"chooseColorButtonID0"};
inline constexpr ControlID<lumui::controls::UI_TextButton> kColorButton1{"chooseColorButtonID1"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kRed0{"chooseColorRedTextID0"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kRed1{"chooseColorRedTextID1"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kGreen0{"chooseColorGreenTextID0"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kGreen1{"chooseColorGreenTextID1"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kBlue0{"chooseColorBlueTextID0"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kBlue1{"chooseColorBlueTextID1"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kAlpha0{"chooseColorAlphaTextID0"};
inline constexpr ControlID<lumui::controls::UI_NumberEdit> kAlpha1{"chooseColorAlphaTextID1"};

inline constexpr ControlID<lumui::controls::UI_Checkbox> kUseAsCustomImporter{"useAsCustomImporterID"};
inline constexpr ControlID<lumui::controls::UI_Button> kSaveToPathButton{"saveToPathButtonID"};
inline constexpr ControlID<lumui::controls::UI_Button> kSaveFileButton{"saveFileButtonID"};
inline constexpr ControlID<lumui::controls::UI_StaticText> kSaveToPathText{"saveToPathStaticTextID"};

inline constexpr char kCancelButtonID[] = "cancelButton";
inline constexpr char kOkButtonID[] = "okButton";
