#include <memory>
#include <optional>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Console.h"
#include "Engine/Clip.h"
#include "Services/Raster/PixelFormats.h"

namespace corvane::commandline {

namespace {

std::string JSONLine(const PixelFormatRow& row, std::optional<CvPixelFormat> delivered) {
    nlohmann::ordered_json line;
    line["code"] = row.code;
    line["characters"] = PixelFormatCharacters(row.code);
    line["name"] = row.name;
    line["deliveredFormat"] = delivered ? nlohmann::ordered_json(PixelFormatNameOrHex(*delivered)) : nullptr;
    return line.dump() + "\n";
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
        Print(request.json ? JSONLine(row, delivered) : TextLine(row, delivered));
    }
    return kExitDone;
}

} // namespace corvane::commandline
