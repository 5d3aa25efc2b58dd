#include "AlertSink.h"

#include <cstdio>

#include "Mosk.h"

namespace corvane {

namespace {

thread_local AlertSink* tActiveSink = nullptr;

} // namespace

AlertSink::AlertSink() : mPrevious(tActiveSink) {
    tActiveSink = this;
}

AlertSink::~AlertSink() {
    tActiveSink = mPrevious;
}

AlertSink::Reply AlertCollector::OnAlert(const std::string& message) {
    mText += message;
    return Reply::kContinue;
}

} // namespace corvane

bool Mosk::ThrowAfterUnhandledExceptionAlert(bool& disabled, const std::string& message) {
    using corvane::AlertSink;
    if (corvane::tActiveSink == nullptr) {
        std::fputs(message.c_str(), stderr);
        return false;
    }
    const AlertSink::Reply reply = corvane::tActiveSink->OnAlert(message);
    if (reply == AlertSink::Reply::kSilence) disabled = true;
    return reply == AlertSink::Reply::kRethrow;
}
