#pragma once

#include "ExportModule.h"

namespace corvane {

/// `ExportClip` by the module that exports, which is loaded first: a program that links `ExportClip` waits
/// for the libraries of pixels and pictures whenever it starts. Throws `Failure` as `FindInModule` does, too.
ExportClipFunction LoadAndExportClip;

} // namespace corvane
