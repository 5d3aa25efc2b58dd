#include "FileError.h"

#include <cerrno>
#include <system_error>

#include <fmt/format.h>

namespace corvane {

FileError FileError::OfReading(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return {Mosk::kResult_NotFound, "there is no such file", {}};
    case EACCES:
    case EPERM: return {Mosk::kResult_AccessDenied, "you are not allowed to read this file", {}};
    case EISDIR: return {Mosk::kResult_NotAFile, "this is a folder", "name a file in it"};
    default: return {Mosk::kResult_Failed, std::generic_category().message(error), {}};
    }
}

FileError FileError::OfWriting(int error) {
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return {Mosk::kResult_DiskFull, "the disk is full", "free some space or choose another place"};
    case EFBIG:
        return {Mosk::kResult_DiskFull, "the file would grow over the size limit",
                "raise it or write a smaller file"};
    default:
        return {Mosk::kResult_Failed,
                fmt::format("it can't be written ({})", std::generic_category().message(error)),
                "choose another place"};
    }
}

} // namespace corvane
