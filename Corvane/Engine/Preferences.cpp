#include "Preferences.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include "Records.h"
#include "Services/Frames/Suites.h"
#include "Services/UI/UIPlatform.h"

namespace corvane {

namespace {

/// The records of one request, and the memory that they point to.
struct Records {
    std::u16string path;
    std::string buffer;
    imFileAccessRec8 access = HostRecord<imFileAccessRec8>();
    imGetPrefsRec prefs = HostRecord<imGetPrefsRec>();
};

void FillRecords(const PreferencesRequest& request, Records& records) {
    records.path = Mosk::FromUTF8(request.file.string());
    records.access.mFilePath = records.path.c_str();
    records.access.mNewFilePath = nullptr;
    records.prefs.mPrefs = nullptr;
    records.prefs.mFirstTime = request.file.empty() && request.settings.empty() ? 1 : 0;
    records.prefs.mSequenceWidth = request.sequence.size.width;
    records.prefs.mSequenceHeight = request.sequence.size.height;
    records.prefs.mSequenceParNumerator = request.sequence.aspect.numerator;
    records.prefs.mSequenceParDenominator = request.sequence.aspect.denominator;
    records.prefs.mSequenceScale = request.sequence.rate.scale;
    records.prefs.mSequenceSampleSize = request.sequence.rate.sampleSize;
}

/// The file whose path a block holds the beginning of. The block has as many bytes as the path has code
/// units, its terminating zero included, which is the first half of the text. It is a file that was written
/// during the request, or was to be; the last one that fits. Null if there is none.
const FileJournal::Entry* FindFile(const void* block, const FileJournal& journal) {
    const std::size_t size = HostBlockSize(block);
    const auto fits = [&](const FileJournal::Entry& entry) {
        return entry.path.size() + 1 == size && std::memcmp(entry.path.c_str(), block, size) == 0;
    };
    const auto& entries = journal.Entries();
    const auto found = std::find_if(entries.rbegin(), entries.rend(), fits);
    return found == entries.rend() ? nullptr : &*found;
}

PreferencesAnswer Failed(std::string why) {
    return {.outcome = PreferencesOutcome::kFailed, .settings = {}, .file = {}, .message = std::move(why)};
}

/// Takes the block of the new path over.
PreferencesAnswer UseFile(char16_t* block, const FileJournal& journal) {
    const std::unique_ptr<char16_t, void (*)(void*)> owned(block, MemoryFunctions()->Free);
    const FileJournal::Entry* const entry = block != nullptr ? FindFile(block, journal) : nullptr;
    if (entry == nullptr)
        return Failed("the plug-in names a saved file as the source, and saved none of that name");
    std::string file = Mosk::ToUTF8(entry->path);
    if (entry->whyNot.empty())
        return {.outcome = PreferencesOutcome::kUseFile, .settings = {}, .file = file, .message = {}};
    return {.outcome = PreferencesOutcome::kNotSaved,
            .settings = entry->text,
            .file = {},
            .message =
                fmt::format("{} could not be saved ({}) and is not the clip's source", file, entry->whyNot)};
}

PreferencesAnswer Interpret(const Answer& answer, const Records& records, const FileJournal& journal) {
    switch (answer.result) {
    case kResult_Success:
    case kResult_Cancelled: {
        // What does not fit is not stored, and nothing is said about it.
        if (records.prefs.mPrefsLength == 0) return Failed("the settings are too long to be kept");
        const bool done = answer.result == kResult_Success;
        return {.outcome = done ? PreferencesOutcome::kDone : PreferencesOutcome::kCancelled,
                .settings = records.buffer.substr(0, records.buffer.find('\0')),
                .file = {},
                .message = {}};
    }
    case kResult_UseSavedFile: return UseFile(records.access.mNewFilePath, journal);
    case kResult_FileUnreadable:
        return {.outcome = PreferencesOutcome::kUnreadable,
                .settings = {},
                .file = {},
                .message = "the file went away, or can't be read any more"};
    default:
        return Failed(answer.alert.empty() ? fmt::format("the plug-in answers {}", answer.result)
                                           : answer.Reason());
    }
}

} // namespace

PreferencesAnswer RequestPreferences(const Bundle& bundle, const PreferencesRequest& request,
                                     const FileJournal& journal) {
    Records records;
    FillRecords(request, records);
    const Answer size = bundle.Call(kSelector_GetPrefs, &records.access, &records.prefs);
    if (size.result != kResult_Success || records.prefs.mPrefsLength <= 0)
        return Failed("the plug-in does not say how much room settings need");
    records.buffer.assign(static_cast<std::size_t>(records.prefs.mPrefsLength), '\0');
    if (request.settings.size() >= records.buffer.size())
        return Failed("the clip's settings are too long for the plug-in");
    std::ranges::copy(request.settings, records.buffer.begin());
    records.prefs.mPrefs = records.buffer.data();
    records.prefs.mPrefsLength = 0;

    const UI_Platform& platform = NeedPlatform();
    const std::size_t before = platform.CountDialogs();
    const Answer answer = bundle.Call(kSelector_GetPrefs, &records.access, &records.prefs);
    // A plug-in without its layout shows none and says nothing.
    if (answer.result == kResult_Success && platform.CountDialogs() == before)
        return Failed("the plug-in shows no dialog; its bundle lacks the layout of one");
    return Interpret(answer, records, journal);
}

} // namespace corvane
