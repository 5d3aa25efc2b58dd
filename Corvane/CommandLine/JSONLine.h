#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace corvane::commandline {

/// The object as a line. Paths may hold any bytes: what is not UTF-8 is replaced. Any thread.
inline std::string JSONLine(const nlohmann::ordered_json& object) {
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace corvane::commandline
