#include "UICalls.h"

#include <utility>

namespace corvane::desktop {

UICalls::UICalls() {
    // One event a call, so that an event loop within a call makes those that follow.
    connect(this, &UICalls::Posted, this, &UICalls::MakeNext, Qt::QueuedConnection);
}

void UICalls::Post(std::function<void()> call) {
    {
        const std::lock_guard lock(mMutex);
        mCalls.push_back(std::move(call));
    }
    Q_EMIT Posted({});
}

void UICalls::MakeNext() {
    std::function<void()> call;
    {
        const std::lock_guard lock(mMutex);
        call = std::move(mCalls.front());
        mCalls.pop_front();
    }
    call();
}

} // namespace corvane::desktop
