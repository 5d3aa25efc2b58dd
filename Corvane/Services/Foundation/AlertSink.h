#pragma once

#include <string>

namespace corvane {

/// Where `Mosk::ThrowAfterUnhandledExceptionAlert` delivers its messages. One sink a thread is active at a
/// time: the one made last on that thread. Without one, messages go to standard error.
class AlertSink {
  public:
    /// What the sink asks of the reporter: to go on, to say nothing any more, or to throw the exception
    /// again.
    enum class Reply { kContinue, kSilence, kRethrow };

    /// Becomes its thread's active sink until it goes. Sinks of a thread go in the reverse order of their
    /// making.
    AlertSink();
    virtual ~AlertSink();
    AlertSink(const AlertSink&) = delete;
    AlertSink& operator=(const AlertSink&) = delete;

    /// Takes one message, and says what the reporter is to do. Called on the thread that made the sink.
    virtual Reply OnAlert(const std::string& message) = 0;

  private:
    AlertSink* mPrevious;
};

/// Keeps the messages of the calls made while it lives, for one request.
class AlertCollector : public AlertSink {
  public:
    /// Keeps the message.
    Reply OnAlert(const std::string& message) override;
    /// The messages so far, one after the other; empty if there was none.
    const std::string& Text() const { return mText; }

  private:
    std::string mText;
};

} // namespace corvane
