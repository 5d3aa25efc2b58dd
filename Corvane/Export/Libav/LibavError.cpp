#include "LibavError.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>

extern "C" {
#include <libavutil/dict.h>
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

int WithMemory(int result) {
    return result == AVERROR(ENOMEM) ? throw std::bad_alloc() : result;
}

LibavOptions::~LibavOptions() {
    av_dict_free(&mDictionary);
}

void LibavOptions::Set(const std::string& name, const std::string& value) {
    if (av_dict_set(&mDictionary, name.c_str(), value.c_str(), 0) < 0) throw std::bad_alloc();
}

std::string LibavOptions::Left() const {
    const AVDictionaryEntry* const left = av_dict_get(mDictionary, "", nullptr, AV_DICT_IGNORE_SUFFIX);
    return left != nullptr ? left->key : "";
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
