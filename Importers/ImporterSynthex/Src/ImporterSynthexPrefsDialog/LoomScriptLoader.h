/// Reads the plug-in's layout scripts.
#pragma once

#include <cstddef>
#include <sstream>
#include <vector>

#include "Mosk.h"

namespace lumloom {

/// Reads a layout script from the plug-in's own bundle. UI thread.
class UI_LoomScriptLoader {
  public:
    /// Reads the resource `layoutName` of the type "loom". A bundle or resource that is missing leaves it
    /// empty.
    explicit UI_LoomScriptLoader(const Mosk::String& layoutName);

    /// Writes the script to `stream`; returns false, and writes nothing, if there is none.
    bool GetStream(std::stringstream& stream) const;

  private:
    std::vector<std::byte> mBytes;
};

} // namespace lumloom
