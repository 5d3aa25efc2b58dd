/// What carries the settings between the importer and its preferences dialog.
#pragma once

#include <cstdint>
#include <string>

#include "Mosk.h"
#include "Platform.h"
#include "SynthexInfo.h"

/// The dialog's view of the exchange. The order of the operations is the binary interface.
class IImporterSynthexPrefsDialogDataExchange : public Mosk::MoskUnknown {
  public:
    /// Takes a copy of the settings and forgets a cancellation.
    virtual void SetPrefs(const SynthexInfo& info) = 0;
    /// Gives a copy of the settings.
    virtual void GetPrefs(SynthexInfo& info) = 0;
    /// Marks the exchange as cancelled. Only the importer reads the mark, from the object itself.
    virtual void UserCancelled() = 0;
    /// Says whether the file that the dialog saved is to become the clip's source.
    virtual void SetUseSavedFrameFileAsSource(bool use) = 0;
    /// The settings as the text of a settings file (UTF-8).
    virtual std::string SerializeOutSynthexData() = 0;
};

/// The interface's identifier: 513EBDA4-568E-463F-ADC7-943CA3A61923.
const CFUUIDBytes& GuidOf(const IImporterSynthexPrefsDialogDataExchange*);

/// The exchange itself. References may be taken and dropped on any thread; all else is used on one thread at
/// a time.
class ImporterSynthexPrefsDialogDataExchange : public IImporterSynthexPrefsDialogDataExchange {
  public:
    using Owner = Mosk::InterfaceRef<ImporterSynthexPrefsDialogDataExchange>;

    /// Makes an exchange with default settings; the result holds its one reference.
    static Owner Create();

    std::int32_t AddRef() noexcept override;
    std::int32_t Release() noexcept override;
    Mosk::Result QueryMap(const CFUUIDBytes& identifier, void** out) override;
    Mosk::MoskUnknown* GetMoskUnknown() override { return this; }

    void SetPrefs(const SynthexInfo& info) override;
    void GetPrefs(SynthexInfo& info) override { info = mPrefs; }
    void UserCancelled() override { mUserCancelled = true; }
    void SetUseSavedFrameFileAsSource(bool use) override { mUseSavedFrameFileAsSource = use; }
    std::string SerializeOutSynthexData() override;

    /// This object as an owning reference.
    virtual operator Mosk::InterfaceRef<Mosk::MoskUnknown>() {
        return Mosk::MoskUnknownRef(GetMoskUnknown());
    }

    /// Whether the person cancelled the dialog after settings were set last.
    bool WasCancelled() const { return mUserCancelled; }
    /// What was last said about using the saved file as the source; at first, false.
    bool UsesSavedFrameFileAsSource() const { return mUseSavedFrameFileAsSource; }

  protected:
    ImporterSynthexPrefsDialogDataExchange() = default;

  private:
    volatile std::int32_t mRefCount = 0; // changed only atomically
    SynthexInfo mPrefs;
    bool mUserCancelled = false;
    bool mUseSavedFrameFileAsSource = false;
};
