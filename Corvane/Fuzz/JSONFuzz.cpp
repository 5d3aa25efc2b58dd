// Sought: text that crashes the parser or the writer, or a tree that comes back different.
#include "Require.h"
#include "lumcore.h"

using namespace lumcore::serialization;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ValuePtr tree = JSONParse(data, size);
    if (!tree) return 0;
    const std::string text = GetJSONUTF8String(*tree, false);
    for (const std::string& form : {text, GetJSONUTF8String(*tree, true)}) {
        const ValuePtr back = JSONParse(reinterpret_cast<const unsigned char*>(form.c_str()));
        Require(back && GetJSONUTF8String(*back, false) == text);
    }
    return 0;
}
