#include "PartFile.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <fmt/format.h>

#include "Services/Foundation/RegularFile.h"

namespace corvane {

Failure PartFailure(const std::filesystem::path& part, const std::string& reason) {
    return Failure(fmt::format("{}: {}; delete it, so that it is made again", part.string(), reason));
}

bool AppendPart(const std::filesystem::path& part, std::span<const std::byte> header, std::uint64_t bytes,
                OutputFile& output, const std::atomic<bool>& cancel) {
    constexpr std::size_t kPiece = 1 << 20;
    try {
        RegularFile file(part, std::numeric_limits<std::int64_t>::max());
        std::vector<std::byte> piece(std::max(kPiece, header.size()));
        const auto begin = std::span(piece).first(header.size());
        if (file.Size() != header.size() + bytes || file.Read(begin) != header.size() ||
            !std::ranges::equal(begin, header))
            throw PartFailure(part, "it is not the part that was expected");
        while (bytes > 0 && !cancel) {
            const auto wanted = std::span(piece).first(std::min<std::uint64_t>(piece.size(), bytes));
            if (file.Read(wanted) != wanted.size()) throw PartFailure(part, "it was cut meanwhile");
            output.Write(wanted);
            bytes -= wanted.size();
        }
        return bytes == 0;
    } catch (const FileError& error) {
        throw PartFailure(part, error.what());
    }
}

} // namespace corvane
