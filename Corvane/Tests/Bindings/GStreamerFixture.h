/// Pipelines of GStreamer around the plug-in, for tests of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gtest/gtest.h>

#include <corvane/handles.h>

#include "Tests/TestFolder.h"

namespace corvane::testing {

/// Gives back what GStreamer counts.
struct GstReleaser {
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(gpointer object) const { gst_object_unref(object); }
};
using GstSampleOwner = std::unique_ptr<GstSample, GstReleaser>;
using GstMessageOwner = std::unique_ptr<GstMessage, GstReleaser>;
template <class Object>
using GstOwner = std::unique_ptr<Object, GstReleaser>;

inline const std::string kSamples = SYNTHEX_SOURCE_DIR "/Samples/";
inline const std::string kPALSample = kSamples + "pal-upper-first.synthex";
/// What `FrameOf` is at the end.
inline constexpr std::uint64_t kNoFrame = ~std::uint64_t{0};

/// A pipeline. Usually it ends in an application's sink, which does not wait for the clock, but for this
/// program.
class Pipeline {
  public:
    explicit Pipeline(const std::string& elements,
                      const std::string& sink = "appsink name=sink sync=false max-buffers=2");
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;
    ~Pipeline();

    GstElement* Bin() const { return mBin.get(); }
    GstStateChangeReturn Set(GstState state) const { return gst_element_set_state(mBin.get(), state); }
    /// The frame at which a pipeline rests, or the next one of a pipeline that plays; none at the end.
    GstSampleOwner Preroll() const;
    GstSampleOwner Next() const;
    /// Seeks; to the end if there is no `stop`.
    bool Seek(double rate, GstFormat format, int flags, gint64 start, gint64 stop = -1) const;
    /// The next message of some kinds; null after ten seconds.
    GstMessageOwner Message(int kinds) const;
    /// The sentence of the error that ends it.
    std::string Error() const;

  private:
    GstOwner<GstElement> mBin, mSink;
};

/// The number of the frame in a sample.
std::uint64_t FrameOf(const GstSampleOwner& sample);
/// The bytes in a sample.
std::string BytesOf(const GstSampleOwner& sample);

/// The first frames of a settings file as they are rendered into a raw file, `native` or converted as exports
/// are.
std::string Rendered(const std::string& path, int count, bool native);

/// GStreamer with the plug-in of the build tree, and nothing that other processes know of it.
class GStreamerFixture : public ::testing::Test {
  protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    TestFolder mFolder;
};

} // namespace corvane::testing
