#include "MemberExport.h"

#include "Export/Targets/ExportKinds.h"

namespace corvane {
namespace {

std::string CodecWithThreads(const Member& member) {
    std::string codec = member.spec.codec;
    const ExportKind* const kind = FindExportKind(KindOf(member));
    if (kind != nullptr && kind->writer != ExportWriter::kLibav) return codec;
    if (codec.empty() && kind != nullptr) codec = kind->codec;
    return codec.empty() || codec.find(":threads=") != std::string::npos ? codec : codec + ":threads=1";
}

} // namespace

std::string KindOf(const Member& member) {
    if (!member.spec.container.empty()) return member.spec.container;
    const std::string suffix = member.output.extension().string();
    return suffix.empty() ? suffix : suffix.substr(1);
}

ExportOptions ExportOf(const Family& family, const Member& member) {
    ExportOptions options;
    options.output = family.Folder() / member.output;
    options.format = member.spec.container;
    options.codec = CodecWithThreads(member);
    options.frames = member.spec.part;
    options.hashFrames = true;
    return options;
}

} // namespace corvane
