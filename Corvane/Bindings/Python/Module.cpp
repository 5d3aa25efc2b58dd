// The part of the Python package that calls the C interface. What people see of it is in synthex/__init__.py,
// types and documentation included: this hands over words, tuples and dictionaries.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <corvane/engine.h>
#include <corvane/handles.h>

namespace py = pybind11;
using corvane::handles::Empty;
using corvane::handles::Importer;

namespace {

/// What became synthex.Error.
class EngineError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Throws what the interface says of the call that failed, on the thread that made it.
void Require(bool succeeded) {
    if (!succeeded) throw EngineError(corvane_last_error());
}

/// As the interface takes a text, which must not end before its end.
const char* Whole(const std::string& text) {
    if (text.find('\0') != std::string::npos)
        throw EngineError("There is a zero byte in a name or a path; leave it out.");
    return text.c_str();
}

const char* OrNull(const std::optional<std::string>& text) {
    return text ? Whole(*text) : nullptr;
}

/// The first one stays loaded: opening a clip does not load the usual plug-in anew.
Importer Load(const std::optional<std::string>& bundle) {
    static std::once_flag sOnce;
    Importer importer(corvane_importer_load(OrNull(bundle)));
    Require(importer != nullptr);
    std::call_once(sOnce, [&] { std::ignore = corvane_importer_load(OrNull(bundle)); });
    return importer;
}

/// A rendering that runs on a thread of its own, so that the interpreter's signals are heard meanwhile.
class Rendering {
  public:
    explicit Rendering(py::object progress) : mProgress(std::move(progress)) {}

    corvane_render_report Run(const corvane_clip* clip, corvane_render_options options) {
        options.progress = [](void* self, std::int64_t done, std::int64_t total) {
            return static_cast<Rendering*>(self)->Tell(done, total);
        };
        options.user = this;
        auto report = Empty<corvane_render_report>();
        {
            const py::gil_scoped_release unlocked;
            auto work = std::async(std::launch::async,
                                   [&] { Require(corvane_clip_render(clip, &options, &report) == 0); });
            while (work.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) HearSignals();
            work.get();
        }
        if (mRaised) std::rethrow_exception(mRaised);
        return report;
    }

  private:
    /// Keeps the first exception, which ends the rendering. With the interpreter's lock.
    void Keep(const py::error_already_set& error) {
        if (!mRaised) mRaised = std::make_exception_ptr(error);
        mEnd = true;
    }

    void HearSignals() {
        const py::gil_scoped_acquire locked;
        if (!mEnd && PyErr_CheckSignals() != 0) Keep(py::error_already_set());
    }

    int Tell(std::int64_t done, std::int64_t total) {
        if (!mEnd && !mProgress.is_none()) {
            const py::gil_scoped_acquire locked;
            try {
                mProgress(done, total);
            } catch (const py::error_already_set& error) {
                Keep(error);
            }
        }
        return mEnd ? 1 : 0;
    }

    const py::object mProgress;
    std::exception_ptr mRaised;
    std::atomic<bool> mEnd{false};
};

class Clip {
  public:
    static Clip Open(const std::string& path, const std::optional<std::string>& bundle) {
        const py::gil_scoped_release unlocked;
        return Clip(corvane_clip_open_file(Load(bundle).get(), Whole(path)));
    }

    static Clip OpenText(const std::string& name, const std::string& settings,
                         const std::optional<std::string>& bundle) {
        const py::gil_scoped_release unlocked;
        return Clip(corvane_clip_open_text(Load(bundle).get(), Whole(name), settings.c_str()));
    }

    static Clip Create(const std::string& name, const std::vector<std::pair<std::string, std::string>>& words,
                       const std::optional<std::string>& bundle) {
        const py::gil_scoped_release unlocked;
        std::vector<corvane_setting> settings;
        for (const auto& [setting, value] : words) settings.push_back({setting.c_str(), Whole(value)});
        return Clip(corvane_clip_create(Load(bundle).get(), Whole(name), settings.data(), settings.size()));
    }

    py::dict Info() const {
        auto info = Empty<corvane_clip_info>();
        Require(corvane_clip_get_info(mClip.get(), &info) == 0);
        using namespace py::literals;
        return py::dict("width"_a = info.width, "height"_a = info.height,
                        "pixel_aspect"_a = py::make_tuple(info.aspect_numerator, info.aspect_denominator),
                        "rate"_a = py::make_tuple(info.rate_numerator, info.rate_denominator),
                        "fields"_a = info.field_order, "format"_a = info.format,
                        "delivered_format"_a = info.delivered_format, "frames"_a = info.frames,
                        "ticks_per_frame"_a = info.ticks_per_frame, "duration_ticks"_a = info.duration_ticks);
    }

    py::str Settings() const { return corvane_clip_settings(mClip.get()); }

    void Save(const std::string& path) const {
        const py::gil_scoped_release unlocked;
        Require(corvane_clip_save(mClip.get(), Whole(path)) == 0);
    }

    /// The frame's own memory, which goes back to the pool when the last view of it dies.
    py::array Frame(std::int64_t index) const {
        const auto release = [](void* frame) { corvane_frame_release(static_cast<corvane_frame*>(frame)); };
        corvane::handles::Frame frame;
        {
            const py::gil_scoped_release unlocked;
            frame.reset(corvane_clip_get_frame(mClip.get(), index));
        }
        Require(frame != nullptr);
        auto info = Empty<corvane_frame_info>();
        Require(corvane_frame_get_info(frame.get(), &info) == 0);
        const corvane_plane& plane = info.plane[0];
        const py::ssize_t component = plane.bytes_per_pixel / 4;
        const py::capsule owner(frame.release(), release);
        return py::array(component == 1 ? py::dtype::of<std::uint8_t>() : py::dtype::of<float>(),
                         {py::ssize_t{plane.height}, py::ssize_t{plane.width}, py::ssize_t{4}},
                         {py::ssize_t{plane.row_bytes}, 4 * component, component}, plane.data, owner);
    }

    py::tuple Render(const std::string& output, const std::optional<std::string>& format,
                     const std::optional<std::string>& codec,
                     const std::optional<std::pair<std::int64_t, std::int64_t>>& frames, bool native,
                     std::uint32_t jobs, std::uint64_t memory, const py::object& progress) const {
        auto options = Empty<corvane_render_options>();
        options.output = Whole(output);
        options.format = OrNull(format);
        options.codec = OrNull(codec);
        options.has_frames = frames.has_value();
        if (frames) std::tie(options.first_frame, options.last_frame) = *frames;
        options.native = native;
        options.jobs = jobs;
        options.memory = memory;
        const corvane_render_report report = Rendering(progress).Run(mClip.get(), options);
        return py::make_tuple(report.frames, report.bytes, report.loses_alpha != 0);
    }

  private:
    explicit Clip(corvane_clip* clip) : mClip(clip) { Require(clip != nullptr); }

    corvane::handles::Clip mClip;
};

py::list Formats(const std::optional<std::string>& bundle) {
    const Importer importer = Load(bundle);
    py::list rows;
    for (std::size_t i = 0; i < corvane_pixel_format_count(); ++i) {
        auto row = Empty<corvane_pixel_format>();
        Require(corvane_pixel_format_at(i, &row) == 0);
        rows.append(py::make_tuple(row.code, row.name, row.components, row.bytes_per_component, row.color,
                                   row.alpha, corvane_importer_delivered_format(importer.get(), row.code)));
    }
    return rows;
}

py::list Rates() {
    py::list rates;
    for (std::size_t i = 0; i < corvane_rate_count(); ++i) {
        std::uint32_t numerator = 0, denominator = 0;
        Require(corvane_rate_at(i, &numerator, &denominator) == 0);
        rates.append(py::make_tuple(numerator, denominator));
    }
    return rates;
}

} // namespace

PYBIND11_MODULE(_engine, module) {
    py::register_exception<EngineError>(module, "Error").attr("__module__") = "synthex";
    py::class_<Clip>(module, "Clip")
        .def_static("open", &Clip::Open)
        .def_static("text", &Clip::OpenText)
        .def_static("create", &Clip::Create)
        .def("info", &Clip::Info)
        .def("settings", &Clip::Settings)
        .def("save", &Clip::Save)
        .def("frame", &Clip::Frame)
        .def("render", &Clip::Render);
    module.def("formats", &Formats);
    module.def("rates", &Rates);
}
