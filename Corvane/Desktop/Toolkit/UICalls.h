#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include <QObject>

namespace corvane::desktop {

/// Calls that threads leave for the UI thread, which makes them in its event loop, in their order.
///
/// What a call holds is destroyed on the UI thread: a call that is queued by Qt itself may go with the thread
/// that left it, and the last reference to a clip with it. Make it on the UI thread, and let it outlive the
/// threads that use it; destroying it drops the calls that were not made.
class UICalls final : public QObject {
    Q_OBJECT

  public:
    UICalls();

    /// Leaves a call. Any thread; fails only for want of memory.
    void Post(std::function<void()> call);

  Q_SIGNALS:
    /// There is one call more.
    void Posted(QPrivateSignal);

  private:
    void MakeNext();

    std::mutex mMutex; // guards mCalls
    std::deque<std::function<void()>> mCalls;
};

} // namespace corvane::desktop
