#include "QuotedText.h"

#include <boost/locale/utf.hpp>
#include <fmt/format.h>

namespace corvane {

std::string Quoted(std::string_view text) {
    namespace utf = boost::locale::utf;
    std::string quoted;
    for (auto at = text.begin(); at != text.end();) {
        const auto start = at;
        const utf::code_point point = utf::utf_traits<char>::decode(at, text.end());
        const bool valid = utf::is_valid_codepoint(point);
        if (valid && point >= ' ' && (point < 0x7F || point > 0x9F)) {
            quoted.append(start, at);
            continue;
        }
        if (!valid) at = start + 1;
        const std::size_t named = std::string_view("\n\t\r").find(*start);
        if (named != std::string_view::npos)
            quoted.append(1, '\\').append(1, "ntr"[named]);
        else
            quoted += fmt::format("\\x{:02x}", valid ? point : static_cast<unsigned char>(*start));
    }
    return quoted;
}

} // namespace corvane
