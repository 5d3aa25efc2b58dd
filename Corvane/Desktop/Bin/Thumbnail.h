#pragma once

#include <QImage>
#include <QSize>

#include "Engine/Clip.h"

namespace corvane::desktop {

/// A picture of a clip's first frame, as large as fits into `size`, its pixels in the shape that the clip
/// gives them; over a checkerboard where the clip is clear. Throws `Failure` if the frame can't be made. Any
/// thread.
QImage MakeThumbnail(const Clip& clip, QSize size);

} // namespace corvane::desktop
