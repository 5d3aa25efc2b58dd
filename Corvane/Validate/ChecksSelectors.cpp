#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <vector>

#include <fmt/format.h>

#include "CheckedRecord.h"
#include "ChecksShared.h"

namespace corvane {

namespace {

/// Where a selector looks for the instance.
enum class InstanceAt { kNowhere, kParam1, kParam2, kParam2Itself };

/// What a selector answers when it is sent with nothing that it could work on.
struct SelectorRow {
    std::int32_t selector;
    InstanceAt place;
    std::int32_t without; ///< the result without an instance
    std::int32_t with;    ///< the result with one; `kOwnCheck` if it has a record of its own
};
constexpr std::int32_t kOwnCheck = -1;

/// The selectors that are answered otherwise than "not supported". Those that make instances have checks of
/// their own, as have initialization and shutdown.
constexpr SelectorRow kSelectors[] = {
    {kSelector_QuietFile, InstanceAt::kNowhere, kResult_Success, kResult_Success},
    {kSelector_CloseFile, InstanceAt::kParam2Itself, kResult_Unsupported, kOwnCheck},
    {kSelector_GetIndPixelFormat, InstanceAt::kParam2, kResult_NoInstance, kOwnCheck},
    {kSelector_Query28, InstanceAt::kNowhere, kResult_Answer28, kResult_Answer28},
    {kSelector_Query36, InstanceAt::kNowhere, kResult_Answer36, kResult_Answer36},
    {kSelector_PreferredFrameSize, InstanceAt::kParam1, kResult_NoInstance, kOwnCheck},
    {kSelector_Request46, InstanceAt::kParam1, kResult_NoInstance, kResult_Unsupported},
    {kSelector_GetSourceVideo, InstanceAt::kParam2, kResult_NoInstance, kOwnCheck},
    {kSelector_Request56, InstanceAt::kParam1, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request58, InstanceAt::kParam2, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request59, InstanceAt::kParam1, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request60, InstanceAt::kParam1, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request61, InstanceAt::kParam2, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request62, InstanceAt::kParam2, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request63, InstanceAt::kParam2, kResult_NoInstance, kResult_Unsupported},
    {kSelector_Request64, InstanceAt::kParam2, kResult_NoInstance, kResult_Unsupported},
};

/// Selectors with checks of their own.
constexpr std::int32_t kCheckedElsewhere[] = {kSelector_Init,     kSelector_Shutdown, kSelector_GetIndFormat,
                                              kSelector_GetInfo8, kSelector_GetPrefs, kSelector_OpenFile8};

std::vector<SelectorRow> SelectorsToSend() {
    std::vector<std::int32_t> selectors = {std::numeric_limits<std::int32_t>::min(),
                                           std::numeric_limits<std::int32_t>::max()};
    for (std::int32_t selector = -2; selector <= kSelector_Last + 4; ++selector)
        selectors.push_back(selector);
    std::vector<SelectorRow> rows;
    for (const std::int32_t selector : selectors) {
        if (std::ranges::find(kCheckedElsewhere, selector) != std::end(kCheckedElsewhere)) continue;
        const auto* const known = std::ranges::find(kSelectors, selector, &SelectorRow::selector);
        rows.push_back(known != std::end(kSelectors) ? *known
                                                     : SelectorRow{selector, InstanceAt::kNowhere,
                                                                   kResult_Unsupported, kResult_Unsupported});
    }
    return rows;
}

/// Sends a selector with two records of no particular kind, which it must leave as they are.
void Send(CheckRun& run, const Bundle& bundle, const SelectorRow& row, void* instance, std::int32_t wanted) {
    constexpr std::size_t kRecordSize = 1024;
    CheckedMemory first(kRecordSize);
    CheckedMemory second(kRecordSize);
    const bool inFirst = row.place == InstanceAt::kParam1;
    if (row.place == InstanceAt::kParam1 || row.place == InstanceAt::kParam2)
        std::memcpy((inFirst ? first : second).Data(), &instance, sizeof instance);
    first.Arm();
    second.Arm();
    void* const param2 = row.place == InstanceAt::kParam2Itself ? instance : second.Data();
    run.Doing(fmt::format("sending selector {} {} an instance", row.selector, instance ? "with" : "without"));
    run.Expect("the result", bundle.Call(row.selector, first.Data(), param2).result, wanted);
    run.FailIf(first.Touched());
    run.FailIf(second.Touched());
}

} // namespace

void CheckSelectorsWithoutInstance(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    for (const SelectorRow& row : SelectorsToSend()) Send(run, bundle, row, nullptr, row.without);
}

void CheckSelectorsWithInstance(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const CheckedInstance instance(bundle, kCheckSettings);
    for (const SelectorRow& row : SelectorsToSend())
        if (row.with != kOwnCheck) Send(run, bundle, row, instance.Get(), row.with);
}

void CheckFormatRegistration(CheckRun& run) {
    constexpr char kName[] = "Synthex";
    constexpr char kExtension[] = "synthex";
    const Bundle bundle(run.BundlePath());
    CheckedRecord<imIndFormatRec> record;
    run.Doing("asking for the first format");
    Ask(run, bundle, kSelector_GetIndFormat, nullptr, record, kResult_Success,
        {CV_RECORD_FIELD(imIndFormatRec, mFileType),
         CV_RECORD_FIELD(imIndFormatRec, mFlags),
         CV_RECORD_FIELD(imIndFormatRec, mReserved8),
         CV_RECORD_FIELD(imIndFormatRec, mReserved760),
         {"mFormatName", offsetof(imIndFormatRec, mFormatName), sizeof kName},
         {"mFormatShortName", offsetof(imIndFormatRec, mFormatShortName), sizeof kName},
         {"mPlatformExtension", offsetof(imIndFormatRec, mPlatformExtension), sizeof kExtension}});
    if (std::memcmp(&record->mFileType, "XNYS", 4) != 0)
        run.Fail("the file type is not SYNX, lowest byte first");
    run.Expect<std::uint32_t>("the flags", record->mFlags, 0xE008);
    run.Expect<std::uint32_t>("the field after the flags", record->mReserved8, 0);
    run.Expect<std::uint32_t>("the last field", record->mReserved760, 0);
    if (std::memcmp(record->mFormatName, kName, sizeof kName) != 0)
        run.Fail("the format's name is not Synthex");
    if (std::memcmp(record->mFormatShortName, kName, sizeof kName) != 0)
        run.Fail("the format's short name is not Synthex");
    if (std::memcmp(record->mPlatformExtension, kExtension, sizeof kExtension) != 0)
        run.Fail("the extension is not synthex");
    CheckedRecord<imIndFormatRec> none;
    run.Doing("asking for a second format");
    Ask(run, bundle, kSelector_GetIndFormat, reinterpret_cast<void*>(1), none, kResult_NoSuchIndex);
}

void CheckPixelFormatList(CheckRun& run) {
    const Bundle bundle(run.BundlePath());
    const CheckedInstance instance(bundle, kCheckSettings);
    CheckedRecord<imIndPixelFormatRec> record;
    record->mPrivateData = instance.Get();
    run.Doing("asking for the first pixel format");
    Ask(run, bundle, kSelector_GetIndPixelFormat, nullptr, record, kResult_Success,
        {CV_RECORD_FIELD(imIndPixelFormatRec, mPixelFormat)});
    run.Expect<std::uint32_t>("the pixel format", record->mPixelFormat, 0);
    run.Doing("asking for a second pixel format");
    Ask(run, bundle, kSelector_GetIndPixelFormat, reinterpret_cast<void*>(1), record, kResult_NoSuchIndex);
}

} // namespace corvane
