/*
 * Writes the frames of a clip to standard output, row by row and without padding, and says on standard error what
 * they are:
 *
 *     frames CLIP.synthex > frames.raw
 */
#include <stdio.h>

#include <corvane/engine.h>

static int fail(void) {
    fprintf(stderr, "frames: %s\n", corvane_last_error());
    return 1;
}

static int write_frame(const corvane_clip* clip, int64_t index) {
    corvane_frame_info info = {.struct_size = sizeof info};
    corvane_frame* frame = corvane_clip_get_frame(clip, index);
    if (frame == NULL || corvane_frame_get_info(frame, &info) != 0) return fail();
    const corvane_plane* plane = &info.plane[0];
    for (uint32_t y = 0; y < plane->height; ++y)
        fwrite((const char*)plane->data + plane->row_bytes * (ptrdiff_t)y, plane->bytes_per_pixel, plane->width,
               stdout);
    corvane_frame_release(frame);
    return 0;
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: frames CLIP.synthex\n");
        return 2;
    }
    corvane_importer* importer = corvane_importer_load(NULL);
    if (importer == NULL) return fail();
    corvane_clip* clip = corvane_clip_open_file(importer, argv[1]);
    if (clip == NULL) return fail();

    corvane_clip_info info = {.struct_size = sizeof info};
    corvane_pixel_format format = {.struct_size = sizeof format};
    if (corvane_clip_get_info(clip, &info) != 0 || corvane_pixel_format_of(info.delivered_format, &format) != 0)
        return fail();
    fprintf(stderr, "%u x %u, %u/%u frames a second, %lld frames, %s\n", info.width, info.height,
            info.rate_numerator, info.rate_denominator, (long long)info.frames, format.name);

    int status = 0;
    for (int64_t i = 0; i < info.frames && status == 0; ++i) status = write_frame(clip, i);
    corvane_clip_release(clip);
    corvane_importer_release(importer);
    return fflush(stdout) == 0 ? status : 1;
}
