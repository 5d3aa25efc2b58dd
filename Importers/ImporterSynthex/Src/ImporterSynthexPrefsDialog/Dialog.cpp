#include <csignal>
#include <sstream>
#include <utility>

#include "DialogImpl.h"
#include "ImporterSynthexPrefsDialog.h"
#include "LoomScriptLoader.h"

#ifndef SYNTHEX_BUNDLE_IDENTIFIER
#error "The build names the bundle's identifier"
#endif

using Dialog = ImporterSynthexPrefsDialogImpl;

const Mosk::String kImporterSynthexPrefsDialogID = Mosk::FromUTF8(SYNTHEX_BUNDLE_IDENTIFIER ".prefs");

namespace {

const Mosk::String kLoomSettingsDialogID = u"ImporterSynthexPrefs";

/// A condition of an entry point, and the place that the host's reports give for it.
struct Contract {
    const char* expression;
    const char* function;
    int line;
};

constexpr char kHandleFunction[] =
    "void HandleImporterSynthexPrefsDialog(const Mosk::String &, Mosk::MoskUnknownRef, "
    "const lumui::drawbot::SupplierInterface *, lumui::ui::UI_Node *)";

// Deliberate: the lines are part of the reports that hosts know, and do not follow this source.
constexpr Contract kKnownDialogID{"inDialogID == kImporterSynthexPrefsDialogID", kHandleFunction, 347};
constexpr Contract kHasDataExchange{"dataExchange != NULL", kHandleFunction, 350};
constexpr Contract kHasView{"dialog != NULL", "virtual void ImporterSynthexPrefsDialogImpl::Initialize()",
                            1118};

/// Reports a contract that does not hold, and raises the error.
void Require(bool holds, const Contract& contract) {
    if (holds) return;
    constexpr char kSource[] = "Importers/ImporterSynthex/Src/ImporterSynthexPrefsDialog";
    if (lumcore::debug::BreakAfterContractDialog(contract.expression, kSource, contract.function,
                                                 contract.line) &&
        lumcore::debug::IsDebuggerAttached())
        std::raise(SIGTRAP);
    lumcore::config::ThrowError(0,
                                "$$$/lumcore/utility/Error/Contract/InputContractViolation="
                                "An input contract violation has occurred!",
                                105, 25, true, {}, {}, {}, {});
}

} // namespace

void HandleImporterSynthexPrefsDialog(const Mosk::String& inDialogID, Mosk::MoskUnknownRef inDataExchange,
                                      const lumui::drawbot::SupplierInterface* inDrawSupplier,
                                      lumui::ui::UI_Node* inParent) {
    Require(inDialogID == kImporterSynthexPrefsDialogID, kKnownDialogID);
    const auto dataExchange = Mosk::QueryInterface<IImporterSynthexPrefsDialogDataExchange>(inDataExchange);
    Require(static_cast<bool>(dataExchange), kHasDataExchange);

    const lumloom::UI_LoomScriptLoader loader(kLoomSettingsDialogID);
    std::stringstream script;
    if (!loader.GetStream(script)) return; // Deliberate: no layout, no dialog, and no word about it.
    Dialog dialog(kLoomSettingsDialogID, inDrawSupplier, inParent, dataExchange);
    dialog.ParseLoomScript(script, false);
}

Dialog::ImporterSynthexPrefsDialogImpl(
    const Mosk::String& layoutName, const lumui::drawbot::SupplierInterface* supplier,
    lumui::ui::UI_Node* parent, Mosk::InterfaceRef<IImporterSynthexPrefsDialogDataExchange> dataExchange)
    : UI_Loom(layoutName, supplier, parent), mDataExchange(std::move(dataExchange)) {
    mDataExchange->GetPrefs(mSynthexInfo);
}

Dialog::~ImporterSynthexPrefsDialogImpl() = default;

/// Ties one control, by its class, to one handler.
struct Binding {
    template <class Control>
    constexpr Binding(ControlID<Control> control, Dialog::Handler change)
        : id(control.text), handler(change), bind([](Dialog& dialog, const Binding& row) {
              dialog.Bind(ControlID<Control>{row.id}, row.handler);
          }) {}

    const char* id;
    Dialog::Handler handler;
    void (*bind)(Dialog&, const Binding&);
};

namespace {

using lumui::controls::UI_Button;

constexpr Binding kBindings[] = {
    {kPixelFormatPopup, &Dialog::PixelFormatPopupChanged},
    {kPixelAspectPopup, &Dialog::PixelAspectPopupChanged},
    {kFrameWidth, &Dialog::FrameWidthChanged},
    {kFrameHeight, &Dialog::FrameHeightChanged},
    {kFieldTypePopup, &Dialog::FieldTypePopupChanged},
    {kFrameRatePopup, &Dialog::FrameRatePopupChanged},
    {kDurationSeconds, &Dialog::DurationSecondsChanged},
    {kDurationFrames, &Dialog::DurationFramesChanged},
    {kDrawFrameNumber, &Dialog::DrawFrameNumberChanged},
    {kColorButton0.As<UI_Button>(), &Dialog::FirstColorButtonChanged},
    {kColorButton1.As<UI_Button>(), &Dialog::SecondColorButtonChanged},
    {kColorRenderingPopup, &Dialog::ColorRenderingChanged},
    {kChooseColorPopup, &Dialog::ChooseColorPopupChanged},
    {kRed0, &Dialog::FirstColorRedChanged},
    {kRed1, &Dialog::SecondColorRedChanged},
    {kGreen0, &Dialog::FirstColorGreenChanged},
    {kGreen1, &Dialog::SecondColorGreenChanged},
    {kBlue0, &Dialog::FirstColorBlueChanged},
    {kBlue1, &Dialog::SecondColorBlueChanged},
    {kAlpha0, &Dialog::FirstColorAlphaChanged},
    {kAlpha1, &Dialog::SecondColorAlphaChanged},
    {kUseAsCustomImporter, &Dialog::UseAsCustomImporterChanged},
    {kSaveToPathButton, &Dialog::SaveToPathButtonChanged},
    {kSaveFileButton, &Dialog::SaveButtonChanged},
    {ControlID<UI_Button>{kCancelButtonID}, &Dialog::CancelButtonChanged},
    {ControlID<UI_Button>{kOkButtonID}, &Dialog::OKButtonChanged},
};

} // namespace

/// Marks the dialog as setting values itself, for the length of a scope.
///
/// A toolkit may raise change messages for values that the program sets, too. They tell of no edit, and are
/// ignored: a popup that shows its first row for a value that no row has would store that row, and a check
/// box that is shown checked would save a file.
class Dialog::SettingScope {
  public:
    explicit SettingScope(Dialog& dialog) : mDialog(dialog) { mDialog.mIsSetting = true; }
    ~SettingScope() { mDialog.mIsSetting = false; }
    SettingScope(const SettingScope&) = delete;
    SettingScope& operator=(const SettingScope&) = delete;

  private:
    Dialog& mDialog;
};

template <class Control>
void Dialog::Bind(ControlID<Control> id, Handler handler) {
    const auto callback = lumui::ui::BindMessageFunction<Dialog, Message>(handler, this);
    Get(id)->NotifyWhenChanged(
        boost::make_shared<lumui::ui::MessageFunction>([this, callback](lumui::ui::UI_Message* message) {
            if (mIsSetting) return;
            const SettingScope setting(*this);
            (*callback)(message);
        }));
}

void Dialog::Initialize() {
    lumcore::config::Localizer::Get();
    Require(GetView() != nullptr, kHasView);
    for (const Binding& row : kBindings) row.bind(*this, row);
    const SettingScope setting(*this);
    InitDialogValues();
}

void Dialog::OKButtonChanged(Message*) {
    // Deliberate: OK closes the dialog even if this last save fails.
    if (!mSynthexInfo.mSavedFilePath.empty()) SaveFileData(mSynthexInfo.mSavedFilePath);
    mDataExchange->SetPrefs(mSynthexInfo);
    GetView()->Close();
}

void Dialog::CancelButtonChanged(Message*) {
    mDataExchange->UserCancelled();
    GetView()->Close();
}
