/// The choices of the dialog's three fixed popups. An item's index is its row's index.
#pragma once

#include <utility>
#include <vector>

#include "CvPixelFormats.h"
#include "Mosk.h"
#include "lummediatypes.h"

/// Rows of {what is stored into the settings, what is shown}.
template <class Value>
using ChoiceList = std::vector<std::pair<Value, Mosk::String>>;

// Each list is filled on first use and kept. UI thread only.

/// The rows of the frame-rate popup.
const ChoiceList<lummediatypes::FrameRate>& GetAllVideoFrameRates();
/// The rows of the pixel-format popup.
const ChoiceList<CvPixelFormat>& GetAllPixelFormats();
/// The rows of the pixel-aspect popup.
const ChoiceList<lummediatypes::PixelAspectRatio>& GetAllPixelAspects();
