/// The host's importer plug-in API: the entry point, its selectors and results, the records that both sides
/// read and write, and the suites of host functions.
///
/// The host calls `xImportEntry` with a selector and two parameters, most often pointers to records. A record
/// is a packed structure; the byte positions are the interface. Bytes that this header gives no name
/// (`mReserved...`) belong to the host and are not touched. Packed fields are read and written by value only.
#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPixelFormats.h"

/// What the host asks for. The numbers are fixed by the host; the ones up to `kSelector_Last` that have no
/// name here are asked of other kinds of importers.
enum CvSelector : std::int32_t {
    kSelector_Init = 0,                ///< param1 `imImportInfoRec*`
    kSelector_Shutdown = 1,            ///< no parameters
    kSelector_QuietFile = 8,           ///< param1 `imFileRef*`, param2 the slot that holds the instance
    kSelector_CloseFile = 9,           ///< param1 `imFileRef*`, param2 the instance itself
    kSelector_GetIndFormat = 14,       ///< param1 the index, param2 `imIndFormatRec*`
    kSelector_GetIndPixelFormat = 27,  ///< param1 the index, param2 `imIndPixelFormatRec*`
    kSelector_Query28 = 28,            ///< no parameters; a fixed answer
    kSelector_Query36 = 36,            ///< no parameters; a fixed answer
    kSelector_GetInfo8 = 37,           ///< param1 `imFileAccessRec8*`, param2 `imFileInfoRec8*`
    kSelector_GetPrefs = 38,           ///< param1 `imFileAccessRec8*`, param2 `imGetPrefsRec*`
    kSelector_OpenFile8 = 39,          ///< param1 `imFileRef*`, param2 `imFileOpenRec8*`
    kSelector_PreferredFrameSize = 45, ///< param1 `imPreferredFrameSizeRec*`
    kSelector_Request46 = 46,          ///< param1 a record that begins with the instance
    kSelector_GetSourceVideo = 47,     ///< param1 `imFileRef*`, param2 `imSourceVideoRec*`
    kSelector_Request56 = 56,          ///< param1 a record that begins with the instance
    kSelector_Request58 = 58,          ///< param2 a record that begins with the instance
    kSelector_Request59 = 59,          ///< param1 a record that begins with the instance
    kSelector_Request60 = 60,          ///< param1 a record that begins with the instance
    kSelector_Request61 = 61,          ///< param2 a record that begins with the instance
    kSelector_Request62 = 62,          ///< param2 a record that begins with the instance
    kSelector_Request63 = 63,          ///< param2 a record that begins with the instance
    kSelector_Request64 = 64,          ///< param2 a record that begins with the instance
    kSelector_Last = 66,
};

/// What an importer answers.
enum CvResult : std::int32_t {
    kResult_Success = 0,
    kResult_FileUnreadable = 2, ///< the settings file could not be opened or read
    kResult_Unsupported = 3,    ///< selector or request not supported; or an exception was caught
    kResult_NoInstance = 5,     ///< the instance is missing, or the frame buffer could not be examined
    kResult_UseSavedFile = 17,  ///< take the file at `imFileAccessRec8::mNewFilePath` as the clip's source
    kResult_InstanceNotCreated = 99, ///< no importer instance could be created
    kResult_Answer28 = 100,          ///< the answer to selector 28
    kResult_Answer36 = 101,          ///< the answer to selector 36
    kResult_Cancelled = 300,         ///< the person cancelled the preferences dialog
    kResult_NoSuchIndex = 301,       ///< end of a list
    kResult_Initialized = 400,       ///< the answer to selector 0
};

// Host functions.

/// The basic suite: how a plug-in gets all others. Functions return 0, or a negative status. Any thread.
struct CvBasicSuite {
    /// Stores the suite of that name and version at `suite`. An unknown name or version stores null and
    /// fails. The host owns the suite and keeps it for the life of the process.
    std::int32_t (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
    /// Gives a suite back; the count of acquisitions is the host's business. Never fails.
    std::int32_t (*ReleaseSuite)(const char* name, std::int32_t version);
};

/// The host's memory functions. Any thread.
struct CvMemoryFunctions {
    /// Returns a block of `size` bytes that the host can free, or null.
    void* (*Allocate)(std::uint32_t size);
    /// Frees a block. Null is allowed.
    void (*Free)(void* block);
};

/// The name of a suite and its versions, for `CvBasicSuite::AcquireSuite`.
inline constexpr char kCvLegacySuite[] = "Corvane Legacy Suite";
inline constexpr std::int32_t kCvLegacySuiteVersion1 = 1;
inline constexpr std::int32_t kCvLegacySuiteVersion2 = 2;

/// "Corvane Legacy Suite", version 1: rates as whole numbers. Any thread.
struct CvLegacySuite1 {
    /// Frame duration in ticks of the rate `scale / sampleSize` frames per second, rounded to the nearest
    /// tick. A scale of 0 gives 0 and fails.
    std::int32_t (*RateToTicks)(std::uint32_t scale, std::uint32_t sampleSize, std::int64_t* ticksPerFrame);
};

/// "Corvane Legacy Suite", version 2: rates both ways. Any thread.
struct CvLegacySuite2 {
    /// As in version 1.
    std::int32_t (*RateToTicks)(std::uint32_t scale, std::uint32_t sampleSize, std::int64_t* ticksPerFrame);
    /// The rate `scale / sampleSize` of a frame duration, in lowest terms; the nearest such fraction if
    /// a term does not fit 32 bits. For 0 or negative ticks the outputs stay as they were and the call fails.
    std::int32_t (*TicksToRate)(std::int64_t ticksPerFrame, std::uint32_t* scale, std::uint32_t* sampleSize);
};

/// A frame buffer. Owned by whoever holds the handle until `CvVexelSuite1::Dispose`.
struct CvVexel;
using CvVexelHandle = CvVexel*;

/// A rectangle in pixels; right and bottom are exclusive.
struct CvRect {
    std::int32_t left, top, right, bottom;
};

/// Access asked of a frame's pixels, and given at creation: reading and writing.
inline constexpr std::int32_t kCvVexelAccess_ReadWrite = 2;

/// The name of a suite and its version, for `CvBasicSuite::AcquireSuite`.
inline constexpr char kCvVexelCreator2Suite[] = "Corvane Vexel Creator 2 Suite";
inline constexpr std::int32_t kCvVexelCreator2SuiteVersion = 3;

/// "Corvane Vexel Creator 2 Suite", version 3: makes frame buffers. Any thread.
struct CvVexelCreator2Suite3 {
    /// Creates a frame of `width` x `height` pixels and stores its handle at `handle`. The pixels hold
    /// whatever the memory held before. Rows begin at multiples of 64 bytes. A side may be 0: the frame has
    /// no pixels then. Fails with a null handle for an extended or unknown format, a size over the host's
    /// limits, or when memory runs out.
    std::int32_t (*Create)(CvVexelHandle* handle, std::int32_t access, CvPixelFormat format,
                           std::uint32_t width, std::uint32_t height, std::int32_t reserved1,
                           std::int32_t reserved2, std::uint32_t parNumerator, std::uint32_t parDenominator);
};

/// The name of a suite and its version, for `CvBasicSuite::AcquireSuite`.
inline constexpr char kCvVexelSuite[] = "Corvane Vexel Suite";
inline constexpr std::int32_t kCvVexelSuiteVersion = 1;

/// "Corvane Vexel Suite", version 1: examines and frees frame buffers. Every function fails on a null handle
/// and leaves its outputs as they were. Different handles may be used from different threads at once.
struct CvVexelSuite1 {
    /// Gives the frame back to the host. The handle is invalid afterwards.
    std::int32_t (*Dispose)(CvVexelHandle handle);
    /// The address of the top-left pixel.
    std::int32_t (*GetPixels)(CvVexelHandle handle, std::int32_t access, char** pixels);
    /// The frame's bounds in pixels: 0, 0, width, height.
    std::int32_t (*GetBounds)(CvVexelHandle handle, CvRect* bounds);
    /// The distance from row to row, in bytes; negative if the rows go up in memory.
    std::int32_t (*GetRowBytes)(CvVexelHandle handle, std::int32_t* rowBytes);
    /// The pixel format the frame was created with.
    std::int32_t (*GetPixelFormat)(CvVexelHandle handle, CvPixelFormat* format);
    /// The pixel aspect ratio the frame was created with.
    std::int32_t (*GetPixelAspectRatio)(CvVexelHandle handle, std::uint32_t* numerator,
                                        std::uint32_t* denominator);
};

/// The name of a suite and its version, for `CvBasicSuite::AcquireSuite`.
inline constexpr char kCvPixelFormatSuite[] = "Corvane Pixel Format Suite";
inline constexpr std::int32_t kCvPixelFormatSuiteVersion = 1;

/// "Corvane Pixel Format Suite", version 1. Any thread.
struct CvPixelFormatSuite1 {
    /// Stores 1 if frames of that format can be created, else 0. Fails only if `answer` is null.
    std::int32_t (*CanCreate)(CvPixelFormat format, std::int32_t* answer);
};

// Records.

/// Version of this API, in `imStdParms`.
inline constexpr std::int32_t kCvImporterAPIVersion = 1;

/// What every call of the entry point gets. Owned by the host; outlives all instances.
struct [[gnu::packed]] imStdParms {
    std::int32_t mAPIVersion; ///< `kCvImporterAPIVersion`
    std::int32_t mReserved4;
    const CvBasicSuite* mBasicSuite;           ///< how to get all other suites
    const CvMemoryFunctions* mMemoryFunctions; ///< memory that the host can free
};

/// A platform file reference. The importer of this project keeps no file open and ignores it.
using imFileRef = void*;

/// Selector 0: capabilities of the importer, each named by its position. The importer sets those that it has
/// to 1.
struct [[gnu::packed]] imImportInfoRec {
    std::byte mReserved0[28];
    std::int32_t mCapability28;
    std::int32_t mCapability32;
    std::int32_t mCapability36;
    std::byte mReserved40[4];
    std::int32_t mCapability44;
    std::byte mReserved48[4];
    std::int32_t mCapability52;
    std::byte mReserved56[4];
    std::int32_t mCapability60;
};

/// Selector 14: one file format.
struct [[gnu::packed]] imIndFormatRec {
    std::uint32_t mFileType;      ///< four-character constant, most significant byte first character
    std::uint32_t mFlags;         ///< what files of the format can do, as bits
    std::uint32_t mReserved8;     ///< set to 0
    char mFormatName[256];        ///< zero-terminated
    char mFormatShortName[32];    ///< zero-terminated
    char mPlatformExtension[460]; ///< extensions, each zero-terminated
    std::uint32_t mReserved760;   ///< set to 0
};

/// Selector 27: one pixel format.
struct [[gnu::packed]] imIndPixelFormatRec {
    void* mPrivateData;         ///< the instance
    CvPixelFormat mPixelFormat; ///< receives the format; 0 is "any"
};

/// Selectors 37 and 38: the clip's file.
struct [[gnu::packed]] imFileAccessRec8 {
    std::byte mReserved0[12];
    const char16_t* mFilePath; ///< zero-terminated, or null for no file; owned by the host
    std::byte mReserved20[8];
    char16_t* mNewFilePath; ///< receives a block made with the host's memory functions; the host frees it
};

/// Selector 39: open a file.
struct [[gnu::packed]] imFileOpenRec8 {
    std::byte mReserved0[12];
    const char16_t* mFilePath; ///< zero-terminated, or null for no file; owned by the host
    std::byte mReserved20[16];
    void* mPrivateData; ///< the instance; kept by the host, destroyed by selector 9
};

/// Selector 37: what a clip is.
struct [[gnu::packed]] imFileInfoRec8 {
    std::uint16_t mHasVideo; ///< set to 1 before anything can fail
    std::uint32_t mWidth;    ///< pixels
    std::uint32_t mHeight;   ///< pixels
    std::byte mReserved10[2];
    std::uint16_t mDepth; ///< bits a pixel
    std::byte mReserved14[4];
    std::uint8_t mFieldType; ///< `lummediatypes::FieldType`
    std::byte mReserved19[3];
    std::uint8_t mFlag22; ///< set to 1
    std::byte mReserved23[11];
    std::uint32_t mParNumerator;   ///< the pixel aspect ratio, width over height, ...
    std::uint32_t mParDenominator; ///< ... as two terms
    std::byte mReserved42[12];
    std::uint32_t mFlag54; ///< set to 1
    std::byte mReserved58[104];
    std::uint32_t mScale;      ///< the rate is scale / sample size ...
    std::uint32_t mSampleSize; ///< ... frames per second
    std::uint32_t mDuration;   ///< frames times sample size, low 32 bits
    std::byte mReserved174[24];
    void* mPrivateData; ///< the instance; kept by the host, destroyed by selector 9
    const char* mPrefs; ///< the clip's preferences data, zero-terminated UTF-8, or null; the host's
};

/// The only size of preferences data that the importer asks for, in bytes.
inline constexpr std::int32_t kPrefsBufferSize = 10240;

/// Selector 38: the clip's preferences data.
struct [[gnu::packed]] imGetPrefsRec {
    char* mPrefs;              ///< the buffer, or null when the host asks for its size
    std::int32_t mPrefsLength; ///< receives `kPrefsBufferSize`
    std::uint8_t mFirstTime;   ///< not 0: a new clip
    std::byte mReserved13[24];
    std::uint32_t mSequenceWidth;          ///< of the host sequence's frame, in pixels
    std::uint32_t mSequenceHeight;         ///< of the host sequence's frame, in pixels
    std::uint32_t mSequenceParNumerator;   ///< its pixel aspect ratio, width over height, ...
    std::uint32_t mSequenceParDenominator; ///< ... as two terms
    std::uint32_t mSequenceScale;          ///< its rate is scale / sample size ...
    std::uint32_t mSequenceSampleSize;     ///< ... frames per second
};

/// Selector 45: frame sizes the clip prefers.
struct [[gnu::packed]] imPreferredFrameSizeRec {
    void* mPrivateData; ///< the instance
    std::byte mReserved8[12];
    std::int32_t mIndex;   ///< which of the sizes is asked for, from 0
    std::uint32_t mWidth;  ///< receives it, in pixels
    std::uint32_t mHeight; ///< receives it, in pixels
};

/// Selector 47: one frame.
struct [[gnu::packed]] imSourceVideoRec {
    void* mPrivateData; ///< the instance
    std::byte mReserved8[4];
    std::int64_t mFrameTime; ///< ticks from the start of the clip
    std::byte mReserved20[16];
    CvVexelHandle* mFrame; ///< where the new frame's handle is stored; the host disposes of the frame
};

/// The importer's one exported function: answers the selector with a `CvResult`. What `param1` and `param2`
/// are stands at the selector. No exception leaves it. The host sends selectors one at a time, except
/// `kSelector_GetSourceVideo`, which may come on several threads at once.
extern "C" std::int32_t xImportEntry(std::int32_t selector, imStdParms* stdParms, void* param1, void* param2);

/// The type of `xImportEntry`, and its name, for hosts that look it up.
using CvImportEntry = std::int32_t (*)(std::int32_t, imStdParms*, void*, void*);
inline constexpr char kCvImportEntryName[] = "xImportEntry";

// The byte positions, asserted.

// clang-format off
#define CV_FIELD(record, field, offset, size) \
    static_assert(offsetof(record, field) == (offset) && sizeof(record::field) == (size))

CV_FIELD(imImportInfoRec, mCapability28, 28, 4);
CV_FIELD(imImportInfoRec, mCapability32, 32, 4);
CV_FIELD(imImportInfoRec, mCapability36, 36, 4);
CV_FIELD(imImportInfoRec, mCapability44, 44, 4);
CV_FIELD(imImportInfoRec, mCapability52, 52, 4);
CV_FIELD(imImportInfoRec, mCapability60, 60, 4);

CV_FIELD(imIndFormatRec, mFileType,            0,   4);
CV_FIELD(imIndFormatRec, mFlags,               4,   4);
CV_FIELD(imIndFormatRec, mReserved8,           8,   4);
CV_FIELD(imIndFormatRec, mFormatName,         12, 256);
CV_FIELD(imIndFormatRec, mFormatShortName,   268,  32);
CV_FIELD(imIndFormatRec, mPlatformExtension, 300, 460);
CV_FIELD(imIndFormatRec, mReserved760,       760,   4);

CV_FIELD(imIndPixelFormatRec, mPrivateData, 0, 8);
CV_FIELD(imIndPixelFormatRec, mPixelFormat, 8, 4);

CV_FIELD(imFileAccessRec8, mFilePath,    12, 8);
CV_FIELD(imFileAccessRec8, mNewFilePath, 28, 8);

CV_FIELD(imFileOpenRec8, mFilePath,    12, 8);
CV_FIELD(imFileOpenRec8, mPrivateData, 36, 8);

CV_FIELD(imFileInfoRec8, mHasVideo,         0, 2);
CV_FIELD(imFileInfoRec8, mWidth,            2, 4);
CV_FIELD(imFileInfoRec8, mHeight,           6, 4);
CV_FIELD(imFileInfoRec8, mDepth,           12, 2);
CV_FIELD(imFileInfoRec8, mFieldType,       18, 1);
CV_FIELD(imFileInfoRec8, mFlag22,          22, 1);
CV_FIELD(imFileInfoRec8, mParNumerator,    34, 4);
CV_FIELD(imFileInfoRec8, mParDenominator,  38, 4);
CV_FIELD(imFileInfoRec8, mFlag54,          54, 4);
CV_FIELD(imFileInfoRec8, mScale,          162, 4);
CV_FIELD(imFileInfoRec8, mSampleSize,     166, 4);
CV_FIELD(imFileInfoRec8, mDuration,       170, 4);
CV_FIELD(imFileInfoRec8, mPrivateData,    198, 8);
CV_FIELD(imFileInfoRec8, mPrefs,          206, 8);

CV_FIELD(imGetPrefsRec, mPrefs,                   0, 8);
CV_FIELD(imGetPrefsRec, mPrefsLength,             8, 4);
CV_FIELD(imGetPrefsRec, mFirstTime,              12, 1);
CV_FIELD(imGetPrefsRec, mSequenceWidth,          37, 4);
CV_FIELD(imGetPrefsRec, mSequenceHeight,         41, 4);
CV_FIELD(imGetPrefsRec, mSequenceParNumerator,   45, 4);
CV_FIELD(imGetPrefsRec, mSequenceParDenominator, 49, 4);
CV_FIELD(imGetPrefsRec, mSequenceScale,          53, 4);
CV_FIELD(imGetPrefsRec, mSequenceSampleSize,     57, 4);

CV_FIELD(imPreferredFrameSizeRec, mPrivateData, 0, 8);
CV_FIELD(imPreferredFrameSizeRec, mIndex,      20, 4);
CV_FIELD(imPreferredFrameSizeRec, mWidth,      24, 4);
CV_FIELD(imPreferredFrameSizeRec, mHeight,     28, 4);

CV_FIELD(imSourceVideoRec, mPrivateData, 0, 8);
CV_FIELD(imSourceVideoRec, mFrameTime,  12, 8);
CV_FIELD(imSourceVideoRec, mFrame,      36, 8);

#undef CV_FIELD
// clang-format on
