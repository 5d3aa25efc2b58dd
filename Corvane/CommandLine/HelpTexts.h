/// What help says besides the options: what the program is, and examples of each subcommand.
#pragma once

namespace corvane::commandline {

inline constexpr char kAbout[] =
    "Exact test clips from small settings files: make and edit them, and get their frames as pictures or "
    "video.";

inline constexpr char kExamples[] =
    R"(Examples:
  synthex info Samples/*.synthex             what these clips are
  synthex render clip.synthex clip.mp4       a video
  synthex render clip.synthex frame.png --frames 0
                                             one picture
  synthex compare clip.synthex clip.mp4      what became of the clip in a video
  synthex sweep clip.synthex 'out/{rate}.mkv' --vary rate=24,25,30
                                             a family of clips
  synthex edit clip.synthex                  its settings in a window
  synthex desktop                            clips, a viewer and exports in a window
  synthex render --help                      more about a subcommand

The plug-in is looked for where --bundle says, else where the environment's
SYNTHEX_BUNDLE says, else beside this program (../lib/ImporterSynthex.bundle).

Exit status: 0 done, 1 the request failed, 2 wrong usage, 3 the dialog was
cancelled, 4 a comparison or --strict found something, 128 plus the signal's
number if a signal ended it.)";

inline constexpr char kInfoExamples[] =
    R"(Examples:
  synthex info clip.synthex
  synthex info *.synthex --json | jq -r 'select(.fieldType == 0) | .path'
  synthex info --strict clip.synthex      what is misspelled or missing in it
  make-settings | synthex info -          settings from standard input

--json prints one object a line, one a clip, with these keys: path, width,
height, parNumerator, parDenominator, fieldType (0 progressive, 1 upper field
first, 2 lower field first, any other interlaced), depth (bits a pixel), scale,
sampleSize (the rate is scale / sampleSize frames a second), duration (frames
times sampleSize, lowest 32 bits), frames, pixelFormat (a name of 'synthex
formats', or the code as "0x........" if it is unknown), deliveredFormat (the
format in which frames arrive; null if none can be made).

--strict says on standard error, a line each, what reading a clip passes over:
unknown keys, missing keys, and values that no clip can have. With --json,
"findings" has the same, of each "key" and "sentence". 'synthex schema' prints
a schema by which editors find most of it.

All clips are tried. Exit status: 0 all were read, 1 some were not, 4 --strict
found something.)";

inline constexpr char kRenderExamples[] =
    R"(Examples:
  synthex render clip.synthex clip.mp4                        H.264
  synthex render clip.synthex clip.mov --codec prores_ks      ProRes
  synthex render clip.synthex clip.mkv --codec ffv1           lossless
  synthex render clip.synthex frame.png --frames 12           one picture
  synthex render clip.synthex 'frame.%05d.png' --frames 0:99  one file a frame
  synthex render clip.synthex clip.raw --native               the plug-in's own bytes
  synthex render clip.synthex part.mov --frames 0:05-0:10     five seconds of it
  synthex render clip.synthex part.mov --frames 00:00:05:12-00:00:09:24
                                                              by timecodes
  synthex render *.synthex --out-dir out --format mp4         a file of each clip
  synthex render clip.synthex - --format y4m | ffplay -       through a pipe

--frames 10:20 and 0:05 are frame numbers. A time such as 2.5s or 0:01:05 is the
frame that is shown then; in a span of times, the end is where it stops: 0:05-0:10
lasts five seconds. A timecode is that frame; with a semicolon (01:00:00;02) its
numbers drop as at 29.97 frames a second.

A file that exists is replaced: on a terminal you are asked first, elsewhere it
is done. -y replaces it without asking, -n keeps it and fails.

A file gets its name when it is complete: a render that fails or is cancelled
(Ctrl-C) leaves nothing behind, and an older file of that name as it was.

Exit status: 0 done, 1 failed, 2 wrong usage, 130 cancelled by Ctrl-C (128 plus
the signal's number: 143 for SIGTERM).)";

inline constexpr char kSweepExamples[] =
    R"(Examples:
  synthex sweep clip.synthex 'out/{name}-{rate}-{fields}.mkv' --codec ffv1 \
      --vary rate=24000/1001,25 --vary fields=progressive,upper,lower
  synthex sweep clip.synthex 'out/{size}.{codec}' --codec ffv1,prores \
      --vary size=720x576,1920x1080 --list     what would be made
  synthex sweep --plan family.json             the same from a file
  synthex sweep --plan family.json --only 0:99 a part of it, as a cluster's task
  synthex sweep --check out/manifest.json      is all there and unchanged?
  synthex sweep --plan family.json --slurm -- --partition=long --time=4:00:00
                                               on a cluster, as one job array
  synthex sweep clip.synthex out/long.mkv --codec ffv1 --split 8
                                               one long clip, in parts

Axes: name, size (WxH), par (N:D), rate (N/D), fields (progressive, upper,
lower), format (bgra ...: 'synthex formats'), mode (colors, gradient), upper,
lower, top-start, top-end, bottom-start, bottom-end (#RRGGBB or R:G:B[:A]),
duration (seconds), frames, codec, container, part (FIRST:LAST). In a file name, what can't be
there becomes an underscore: 24000_1001. {codec} at the end gets the codec's
usual suffix: clip.prores.mov.

Beside the outputs are the settings file of each clip, and manifest.json with
each member's settings, facts, size, and the MD5 of every frame, as in
'ffmpeg -i OUT -f framemd5 -' (Docs/Sweep.md). Run again, it makes only what is
missing or was made by other settings.

Exit status: 0 done, 1 a member can't be made or a check found something, 2
wrong usage, 130 cancelled by Ctrl-C; what is made is kept.)";

inline constexpr char kCompareExamples[] =
    R"(Examples:
  synthex compare clip.synthex clip.mp4                       what an encoder did
  synthex compare clip.synthex 'capture.%05d.png'             numbered pictures
  synthex compare clip.synthex captured.mov --frames 100:199  a part of the clip
  synthex compare clip.synthex out.mkv --report report.html   with pictures
  synthex compare clip.synthex out.mkv --ignore color,time.jitter
  ffmpeg -i in.mov -f nut - | synthex compare clip.synthex -  through a pipe
  synthex compare out/manifest.json captured                  a family of 'sweep'

The pictures are measured; what the file says of itself is not believed, but told
where it contradicts them. Docs/Compare.md tells every kind of finding.

--json prints one object: clip, video, frames_compared, frames_matched, psnr and
max_error (of each plane: y, cb, cr or r, g, b, and a; psnr is null where nothing
differs), findings (each with kind, sentence, frames as [first, last] pairs,
expected, found, cause). Of a family it prints one with members: of each its
output, and these keys or failure.

Exit status: 0 nothing beyond the tolerance, 1 failed, 2 wrong usage, 4 findings,
130 ended by Ctrl-C (128 plus the signal's number), after what was found so far.)";

inline constexpr char kNewExamples[] =
    R"(Examples:
  synthex new clip.synthex                                    in a window
  synthex new clip.synthex --size 720x576 --par 16:15 --rate 25
  synthex new clip.synthex --size 3840x2160 --rate 119.88
  synthex new clip.synthex --rate 30000/1001 --do fieldTypePopupID=1 \
      --do durationFramesTextID=300                           without one)"
    "\n";

inline constexpr char kEditExamples[] =
    R"(Examples:
  synthex edit clip.synthex                                   in a window
  synthex edit clip.synthex --do frameWidthID=1280 --do frameHeightID=720
  synthex edit clip.synthex --do chooseColorButtonID0 --answer color=1,0.5,0,1
  synthex edit clip.synthex --cancel --dump | jq .            only look)"
    "\n";

/// What --do and its like mean, for both subcommands that show the dialog.
inline constexpr char kDialogHelp[] =
    R"(
With any of --do, --answer, --cancel and --dump the dialog is worked without a
window: the actions of --do in their order, then OK (or Cancel). ID names a
control, as --dump lists them; VALUE is a number, an item's text or index, or
true or false; a button is pressed by its ID alone. What the dialog asks on the
way takes the --answers in their order: save=PATH or save=cancel (where to save),
again=yes or again=no (another path after a failed save), color=R,G,B,A (0 to 1)
or color=cancel.

--dump prints the dialog's state just before it closes: one JSON object of
ID -> class, enabled, value, items, disabledItems, title, as the control has them.
A script that can't be carried out changes nothing and says what it should be.

Exit status: 0 done, 1 failed, 2 wrong usage, 3 cancelled.)";

inline constexpr char kFormatsExamples[] =
    R"(Examples:
  synthex formats
  synthex formats --json | jq -r 'select(.deliveredFormat == .name) | .code'

"mPixelFormat" of a settings file is one of these codes, as a decimal number.
Frames of formats that can't be drawn in arrive in the one named last.
--json prints one object a line: code, characters, name, deliveredFormat.

Exit status: 0 done, 1 the plug-in could not be used.)";

inline constexpr char kCodecsExamples[] =
    R"(Examples:
  synthex codecs
  synthex codecs --json | jq -r .example

What --codec of 'render' and 'sweep' takes: the names, the options that matter,
which stand behind colons, and an example. For y4m it is the sampling instead:
420, 422 or 444, with p8, p10, p12, p14 or p16 behind it. --json prints one
object a line: name, encoder (of libav), about, format, options, example.

Exit status: 0 done.)";

inline constexpr char kSchemaExamples[] =
    R"(Examples:
  synthex schema > synthex.schema.json              of settings files (.synthex)
  synthex schema project > project.schema.json      of projects (.cvproj)
  synthex schema sweep > sweep-plan.schema.json     of plans of 'synthex sweep'

JSON Schema, draft 2020-12: editors complete and check files by it, and
validators of every language read it. 'synthex info --strict' makes the same
checks of settings files, and more.

Exit status: 0 done, 1 failed, 2 wrong usage.)";

inline constexpr char kValidateExamples[] =
    R"(Examples:
  synthex validate                                  the bundle that is in use
  synthex validate build/lib/ImporterSynthex.bundle
  synthex validate Some.bundle --time-limit 60
  synthex validate --sequences 100000 --time-limit 600

The checks are made in a process of its own: a plug-in that hangs or crashes is
a failed check. Each check is one line, 'pass' or 'FAIL'.

Exit status: 0 all checks passed, 1 some failed.)";

inline constexpr char kDesktopExamples[] =
    R"(Examples:
  synthex desktop                                   an empty project
  synthex desktop tests.cvproj                      a project
  synthex desktop *.synthex                         a new project of these clips

A window with the project's clips, a viewer, the settings dialog and exports.
What is not saved is kept, and offered on the next start, however the program
ends.

Exit status: 0 closed, 1 no window can be shown, 128 plus the signal's number
if a signal ended it.)";

} // namespace corvane::commandline
