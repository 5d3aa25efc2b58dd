#include "LibavError.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/log.h>
}

namespace corvane {
namespace {

std::mutex sMutex;
int sLogs = 0; // how many there are
// An encoder logs on the thread that calls it, so that exports side by side don't take each other's errors.
thread_local std::string sLast;

void KeepErrors(void*, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_ERROR) return;
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    std::string text = line;
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    if (!text.empty()) sLast = text;
}

} // namespace

std::string LibavMessage(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

LibavLog::LibavLog() {
    Clear();
    const std::lock_guard lock(sMutex);
    if (sLogs++ == 0) av_log_set_callback(KeepErrors);
}

LibavLog::~LibavLog() {
    const std::lock_guard lock(sMutex);
    if (--sLogs == 0) av_log_set_callback(av_log_default_callback);
}

void LibavLog::Clear() const {
    sLast.clear();
}

std::string LibavLog::Reason(int error) const {
    return sLast.empty() ? LibavMessage(error) : sLast;
}

} // namespace corvane
