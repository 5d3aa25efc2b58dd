#pragma once

#include <optional>
#include <string>

#include "CvPixelFormats.h"

namespace corvane::commandline {

/// The name of a pixel format of the host; empty for an unknown code.
std::string FormatName(CvPixelFormat format);

/// A code's four characters, those that can't be printed as dots.
std::string FormatCharacters(CvPixelFormat format);

/// A code as hexadecimal text, "0x" and eight digits.
std::string FormatHex(CvPixelFormat format);

/// For data: the name of a known format, else the code as hexadecimal text.
std::string FormatNameOrHex(CvPixelFormat format);

} // namespace corvane::commandline
