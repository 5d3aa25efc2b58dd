/// The settings record of one clip, and its JSON form.
#pragma once

#include <cstddef>
#include <cstdint>

#include "CvPixelFormats.h"
#include "Mosk.h"
#include "lumcore.h"
#include "lummediatypes.h"

/// A color: gamma-coded R'G'B' and straight alpha, nominally 0..1; any value is kept. Alpha comes first.
struct FloatColor {
    float mAlphaPart = 1.0f;
    float mRedPart = 0.0f;
    float mGreenPart = 0.0f;
    float mBluePart = 0.0f;

    friend bool operator==(const FloatColor&, const FloatColor&) = default;
};

/// How frames are colored. Every non-zero value means the gradient.
enum ContentRenderFormat : std::uint32_t {
    kContentRenderFormat_FieldColors = 0,
    kContentRenderFormat_HorizontalGradient = 1,
};

/// Everything that describes a generated clip. A value type; the initializers are the defaults.
///
/// Deliberate: "Gradiant" is how the keys of settings files in the field are spelled.
struct SynthexInfo {
    /// The format of the frames that the clip delivers.
    CvPixelFormat mPixelFormat = CvPixelFormat_BGRA_4444_8u;
    std::uint32_t mFrameWidth = 720;  ///< pixels
    std::uint32_t mFrameHeight = 480; ///< pixels
    lummediatypes::PixelAspectRatio mFramePAR = lummediatypes::kPixelAspectRatio_DVNTSCWide;
    /// Any value may arrive from a file; every non-zero one is interlaced.
    lummediatypes::FieldType mFieldType = lummediatypes::kFieldType_LowerFirst;
    ContentRenderFormat mRenderFormat = kContentRenderFormat_FieldColors;

    FloatColor mUpperFieldColor{1.0f, 1.0f, 0.5f, 0.25f}; ///< the whole frame's if it is progressive
    FloatColor mLowerFieldColor{1.0f, 0.0f, 1.0f, 0.0f};
    FloatColor mTopGradiantColorStart{1.0f, 1.0f, 0.0f, 0.0f};    ///< top row, first frame
    FloatColor mBottomGradiantColorStart{1.0f, 0.0f, 1.0f, 0.0f}; ///< bottom, first frame
    FloatColor mTopGradiantColorEnd{1.0f, 0.5f, 0.5f, 0.5f};      ///< top row, end of the clip
    FloatColor mBottomGradiantColorEnd{1.0f, 1.0f, 0.5f, 0.25f};  ///< bottom, end of the clip

    lummediatypes::TickTime mVideoDuration{60 * lummediatypes::kTicksPerSecond};
    lummediatypes::FrameRate mVideoFrameRate = lummediatypes::kFrameRate_Video30;

    // The three below have no JSON form: reading a document resets them.
    Mosk::String mSavedFilePath;               ///< the file that the dialog last saved to; empty for none
    Mosk::String mClipName = u"Default Frame"; ///< after a save, the file-name part of the path
    bool mDrawFrameNumber = true;              ///< print the frame number; interlaced clips only
};

namespace lumcore::serialization {

// `ToJSON` makes a value of a type; `FromJSON` reads one and throws `boost::bad_any_cast` if the value is of
// the wrong kind. An integer is accepted for a double, but not the other way round. Any thread.

template <>
struct JSONConvert<double> {
    static double FromJSON(const Value& value);
};

template <>
struct JSONConvert<FloatColor> {
    static Value ToJSON(const FloatColor& color);
    static FloatColor FromJSON(const Value& value);
};

template <>
struct JSONConvert<lummediatypes::PixelAspectRatio> {
    static Value ToJSON(const lummediatypes::PixelAspectRatio& ratio);
    static lummediatypes::PixelAspectRatio FromJSON(const Value& value);
};

template <>
struct JSONConvert<lummediatypes::TickTime> {
    static Value ToJSON(const lummediatypes::TickTime& time);
    static lummediatypes::TickTime FromJSON(const Value& value);
};

template <>
struct JSONConvert<lummediatypes::FrameRate> {
    static Value ToJSON(const lummediatypes::FrameRate& rate);
    static lummediatypes::FrameRate FromJSON(const Value& value);
};

/// The document: one object of 14 members whose keys are the names of the record's fields.
template <>
struct JSONConvert<SynthexInfo> {
    static Value ToJSON(const SynthexInfo& info);
    static SynthexInfo FromJSON(const Value& value);
};

template <>
struct Serializer<SynthexInfo> {
    /// Reads a record from JSON text. `size` counts the terminating zero, if there is one. A record wrapped
    /// in an object under "SerializerWrappedObject" is unwrapped. Throws `std::runtime_error` ("JSON not
    /// well-formed") or `boost::bad_any_cast` (a member of the wrong kind).
    static SynthexInfo FromUTF8String(const unsigned char* data, std::size_t size);
};

} // namespace lumcore::serialization
