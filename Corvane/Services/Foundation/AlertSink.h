#pragma once

#include <string>

namespace corvane {

/// Where `Mosk::ThrowAfterUnhandledExceptionAlert` delivers its messages. One sink a thread is active at a
/// time: the one made last on that thread. Without one, messages go to standard error.
class AlertSink {
  public:
    /// What the sink asks of the reporter.
    enum class Reply { kContinue, kSilence, kRethrow };

    AlertSink();
    virtual ~AlertSink();
    AlertSink(const AlertSink&) = delete;
    AlertSink& operator=(const AlertSink&) = delete;

    /// Takes one message. Called on the thread that made the sink.
    virtual Reply OnAlert(const std::string& message) = 0;

  private:
    AlertSink* mPrevious;
};

/// Keeps the messages of the calls made while it lives, for one request.
class AlertCollector : public AlertSink {
  public:
    Reply OnAlert(const std::string& message) override;
    const std::string& Text() const { return mText; }

  private:
    std::string mText;
};

} // namespace corvane
