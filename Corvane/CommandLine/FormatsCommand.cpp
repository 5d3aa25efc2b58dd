#include <memory>
#include <optional>

#include <fmt/format.h>

#include "Commands.h"
#include "Console.h"
#include "Engine/Clip.h"
#include "JSONLine.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane::commandline {

namespace {

std::string DataLine(const PixelFormatRow& row, std::optional<CvPixelFormat> delivered) {
    nlohmann::ordered_json line;
    line["code"] = row.code;
    line["characters"] = PixelFormatCharacters(row.code);
    line["name"] = row.name;
    line["deliveredFormat"] = delivered ? nlohmann::ordered_json(PixelFormatNameOrHex(*delivered)) : nullptr;
    return JSONLine(line);
}

std::string TextLine(const PixelFormatRow& row, std::optional<CvPixelFormat> delivered) {
    return fmt::format("{}  {}  {:<61}  {}\n", PixelFormatHex(row.code), PixelFormatCharacters(row.code),
                       row.name, delivered ? PixelFormatNameOrHex(*delivered) : "-");
}

} // namespace

int RunFormats(const FormatsRequest& request) {
    const auto bundle = std::make_shared<Bundle>(Bundle::Find(request.bundle));
    if (!request.json) Print(fmt::format("{:<10}  {:<4}  {:<61}  {}\n", "Code", "", "Name", "Delivered as"));
    for (const PixelFormatRow& row : PixelFormatTable()) {
        const std::optional<CvPixelFormat> delivered = DeliveredFormat(bundle, row.code);
        Print(request.json ? DataLine(row, delivered) : TextLine(row, delivered));
    }
    return kExitDone;
}

} // namespace corvane::commandline
