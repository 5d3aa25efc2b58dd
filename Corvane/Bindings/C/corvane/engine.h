/**
 * The engine of the Corvane bench for programs in C, and in any language that calls C: opens clips, says
 * what they are, hands out their frames as the plug-in made them, and renders them into files.
 *
 * Objects are opaque. What a function returns as a pointer without `const` is the caller's, who gives it back
 * by the function of that name with `_release`, in any order and on any thread; NULL may be given back, too.
 * "Any thread" means that a function may be called from any thread, also while others are called with the
 * same object.
 *
 * Texts are UTF-8 and end at a zero byte; paths are bytes as the system takes them. A function that returns a
 * pointer returns NULL if it fails, one that returns `int` returns 0 if it succeeds and -1 if not, and
 * `corvane_last_error` has the reason then. A function that is given NULL for an object fails, and leaves the
 * reason of an earlier failure on that thread as it is: calls can be made one after the other, and the last
 * one alone be asked. No function ends the process or lets an exception out.
 *
 * A structure that the library fills begins with `struct_size`, which the caller sets to `sizeof` of it: of a
 * library that knows more members than the caller the ones that both know are filled, and of one that knows
 * fewer the rest is set to 0.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The version of this interface. Only ever added to within a version. */
#define CORVANE_ENGINE_VERSION 1

#if defined(__GNUC__)
#define CORVANE_ENGINE_API __attribute__((visibility("default")))
#else
#define CORVANE_ENGINE_API
#endif

/** The version of the interface that the library has. Any thread. */
CORVANE_ENGINE_API unsigned corvane_engine_version(void);

/**
 * Why the last function of this library that failed on this thread did so: one sentence for people, which
 * names the file and the remedy if there is one. "" if none has failed. Any thread, each with its own; the
 * text stays until the next failure on this thread.
 */
CORVANE_ENGINE_API const char* corvane_last_error(void);

/** An importer plug-in, loaded. */
typedef struct corvane_importer corvane_importer;
/** An open clip. Keeps its importer. */
typedef struct corvane_clip corvane_clip;
/** A frame and its pixels. Needs neither its clip nor its importer. */
typedef struct corvane_frame corvane_frame;

/**
 * Loads the plug-in in `bundle`, a path. NULL: what the environment's SYNTHEX_BUNDLE names, else
 * `ImporterSynthex.bundle` beside the library's own folder of modules. A bundle that is loaded already is
 * shared. It is unloaded when the last importer and clip of it are released. Fails if it is no bundle, or
 * does not initialize. Any thread.
 */
CORVANE_ENGINE_API corvane_importer* corvane_importer_load(const char* bundle);
/** Gives an importer back; its clips stay. Any thread, as the last call with it. */
CORVANE_ENGINE_API void corvane_importer_release(corvane_importer* importer);

/** Opens a settings file. Fails if it can't be read or holds no settings. Any thread. */
CORVANE_ENGINE_API corvane_clip* corvane_clip_open_file(const corvane_importer* importer, const char* path);

/**
 * Opens a clip of a settings text, the content of a settings file. `name` is what to call it in sentences.
 * Fails if the text is no settings. Any thread.
 */
CORVANE_ENGINE_API corvane_clip* corvane_clip_open_text(const corvane_importer* importer, const char* name,
                                                        const char* settings);

/** A setting of a clip by its words. */
typedef struct corvane_setting {
    const char* name;  /**< an axis of `synthex sweep`: "size", "rate", "fields", "format", "upper" ... */
    const char* value; /**< "720x576", "30000/1001", "upper", "BGRA_4444_8u", "#ff8040" ... */
} corvane_setting;

/**
 * Makes a clip of `count` settings, of which later ones replace earlier ones. What they don't tell: 1920 x
 * 1080 square pixels, 30 frames a second, 10 seconds, progressive, BGRA in bytes, opaque black; a gradient if
 * one of its colors is told. `name` is what to call it in sentences. Fails, naming the setting and what can
 * be written, if one is not understood. Any thread.
 */
CORVANE_ENGINE_API corvane_clip* corvane_clip_create(const corvane_importer* importer, const char* name,
                                                     const corvane_setting* settings, size_t count);

/** Gives a clip back; its frames stay. Any thread, as the last call with it. */
CORVANE_ENGINE_API void corvane_clip_release(corvane_clip* clip);

/** What `field_order` of a clip can be. The upper field is the even rows. */
enum {
    CORVANE_FIELDS_PROGRESSIVE = 0,
    CORVANE_FIELDS_UPPER_FIRST = 1,
    CORVANE_FIELDS_LOWER_FIRST = 2,
    CORVANE_FIELDS_UNKNOWN = 3 /**< interlaced, but nobody says which field comes first */
};

/** What a clip is. */
typedef struct corvane_clip_info {
    size_t struct_size;
    uint32_t width;            /**< pixels */
    uint32_t height;           /**< rows */
    uint32_t aspect_numerator; /**< shape of a pixel, its width over its height; 0 if there is none */
    uint32_t aspect_denominator;
    uint32_t rate_numerator; /**< frames a second; 0 if there is none */
    uint32_t rate_denominator;
    int32_t field_order;       /**< CORVANE_FIELDS_... */
    uint32_t format;           /**< code of the pixel format that the settings name */
    uint32_t delivered_format; /**< code of the one in which frames come; 0 if there can be none */
    int64_t frames;            /**< whole frames; 0 if there are none */
    int64_t ticks_per_frame;   /**< exact; there are 254016000000 ticks in a second */
    int64_t duration_ticks;
} corvane_clip_info;

/** Fills `info`. Any thread. */
CORVANE_ENGINE_API int corvane_clip_get_info(const corvane_clip* clip, corvane_clip_info* info);

/** The settings text, as the plug-in writes it. Lives as long as the clip. Any thread. */
CORVANE_ENGINE_API const char* corvane_clip_settings(const corvane_clip* clip);

/**
 * Writes the settings file of the clip, which replaces an older file whole. Fails, and changes nothing, if it
 * can't be written. Any thread.
 */
CORVANE_ENGINE_API int corvane_clip_save(const corvane_clip* clip, const char* path);

/** How many frame rates the host names. Clips may have others. Any thread. */
CORVANE_ENGINE_API size_t corvane_rate_count(void);

/** The rate of an index below `corvane_rate_count`, in lowest terms, the slowest first. Fails if there is
 * none. Any thread. */
CORVANE_ENGINE_API int corvane_rate_at(size_t index, uint32_t* numerator, uint32_t* denominator);

/** What a component of a color is. */
enum {
    CORVANE_COLOR_RGB = 0,        /**< R'G'B', gamma coded */
    CORVANE_COLOR_RGB_LINEAR = 1, /**< RGB of linear light */
    CORVANE_COLOR_YCBCR_601 = 2,  /**< Y'CbCr by the matrix of ITU-R BT.601 */
    CORVANE_COLOR_YCBCR_709 = 3   /**< Y'CbCr by the matrix of ITU-R BT.709 */
};

/** What the fourth component of a pixel is. */
enum { CORVANE_ALPHA_STRAIGHT = 0, CORVANE_ALPHA_PREMULTIPLIED = 1, CORVANE_ALPHA_IGNORED = 2 };

/** What a pixel is. */
typedef struct corvane_pixel_format {
    size_t struct_size;
    uint32_t code;
    const char* name;            /**< such as "BGRA_4444_8u"; lives as long as the process */
    char components[5];          /**< letters in the order of memory: "BGRA", "VUYA", "ARGB", X if ignored */
    uint8_t bytes_per_component; /**< 1: 0 to 255; 4: float */
    uint8_t color;               /**< CORVANE_COLOR_... */
    uint8_t alpha;               /**< CORVANE_ALPHA_... */
} corvane_pixel_format;

/** How many pixel formats there are. Any thread. */
CORVANE_ENGINE_API size_t corvane_pixel_format_count(void);

/**
 * Fills `format` with that of an index below `corvane_pixel_format_count`, in the host's order. Only formats
 * in which frames come have components, bytes, color and alpha; the others have 0. Fails if there is none.
 * Any thread.
 */
CORVANE_ENGINE_API int corvane_pixel_format_at(size_t index, corvane_pixel_format* format);

/** The same for a format's code. Any thread. */
CORVANE_ENGINE_API int corvane_pixel_format_of(uint32_t code, corvane_pixel_format* format);

/** The code of the format in which frames of clips of the format `code` come; 0 if none can be made. Any
 * thread. */
CORVANE_ENGINE_API uint32_t corvane_importer_delivered_format(const corvane_importer* importer,
                                                              uint32_t code);

/**
 * Makes frame `index`, counted from 0. Fails if there is no such frame or it can't be made. Any thread; many
 * at the same time make frames of one clip side by side.
 */
CORVANE_ENGINE_API corvane_frame* corvane_clip_get_frame(const corvane_clip* clip, int64_t index);

/** Gives the memory of a frame back to the pool, from which further frames are made. Any thread, as
 * the last call with it. */
CORVANE_ENGINE_API void corvane_frame_release(corvane_frame* frame);

/** A part of a frame's pixels that lies in memory as one rectangle. */
typedef struct corvane_plane {
    void* data;               /**< row r begins at `data` + r * `row_bytes`; the caller may write, too */
    ptrdiff_t row_bytes;      /**< from row to row; at least `width` * `bytes_per_pixel` */
    uint32_t width;           /**< pixels */
    uint32_t height;          /**< rows, from the top */
    uint32_t bytes_per_pixel; /**< of all components that lie in this plane */
} corvane_plane;

/** The pixels of a frame. */
typedef struct corvane_frame_info {
    size_t struct_size;
    uint32_t format; /**< code, see `corvane_pixel_format_of` */
    uint32_t planes; /**< how many of `plane` there are: 1 in all formats of this version */
    corvane_plane plane[4];
} corvane_frame_info;

/** Fills `info`. The pixels live as long as the frame. Any thread; those who write pixels keep
 * others away from them themselves. */
CORVANE_ENGINE_API int corvane_frame_get_info(const corvane_frame* frame, corvane_frame_info* info);

/**
 * Told after each frame that was rendered, by one thread at a time, not always the caller's. What is not 0
 * ends the rendering.
 */
typedef int (*corvane_progress)(void* user, int64_t done, int64_t total);

/** How to render. All members that are 0 mean what `synthex render` does without the option. */
typedef struct corvane_render_options {
    size_t struct_size;
    const char* output; /**< the file, or a numbered name of pictures, "name.%05d.png" */
    const char* format; /**< as `--format`; NULL: from the suffix of `output` */
    const char* codec;  /**< as `--codec`; NULL: the format's usual one */
    int has_frames;     /**< whether only the frames from `first_frame` to `last_frame`, both included */
    int native;         /**< only for raw files: the bytes as the plug-in made them */
    int64_t first_frame;
    int64_t last_frame;
    uint64_t memory; /**< bytes that frames on their way may take */
    uint32_t jobs;   /**< threads */
    corvane_progress progress;
    void* user; /**< handed to `progress` */
} corvane_render_options;

/** What was rendered. */
typedef struct corvane_render_report {
    size_t struct_size;
    int64_t frames;
    uint64_t bytes;
    int cancelled;   /**< `progress` ended it; nothing is left behind */
    int loses_alpha; /**< the clip is not opaque, and the output has no place for its alpha */
} corvane_render_report;

/**
 * Renders into a file, which gets its name when it is complete. `report` may be NULL. Fails for options that
 * can't be and for what goes wrong; no partial file remains. A rendering that `progress` ended succeeds.
 * Any thread, which waits meanwhile.
 */
CORVANE_ENGINE_API int corvane_clip_render(const corvane_clip* clip, const corvane_render_options* options,
                                           corvane_render_report* report);

#ifdef __cplusplus
}
#endif
