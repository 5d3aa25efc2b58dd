#include "ClipFacts.h"

#include <nlohmann/json.hpp>

#include "Services/Raster/PixelFormats.h"

namespace corvane {

nlohmann::ordered_json ClipFacts(const ClipInfo& info) {
    nlohmann::ordered_json facts;
    facts["width"] = info.format.size.width;
    facts["height"] = info.format.size.height;
    facts["parNumerator"] = info.format.aspect.numerator;
    facts["parDenominator"] = info.format.aspect.denominator;
    facts["fieldType"] = info.fieldType;
    facts["depth"] = info.depth;
    facts["scale"] = info.format.rate.scale;
    facts["sampleSize"] = info.format.rate.sampleSize;
    facts["duration"] = info.duration;
    facts["frames"] = info.frames;
    facts["pixelFormat"] = PixelFormatNameOrHex(info.pixelFormat);
    const PixelFormatRow* const delivered = FindPixelFormatOf(info.format.raster);
    facts["deliveredFormat"] = delivered == nullptr ? nullptr : nlohmann::ordered_json(delivered->name);
    return facts;
}

} // namespace corvane
