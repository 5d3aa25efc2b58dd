#include "ClipLoader.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "Engine/Failure.h"
#include "Thumbnail.h"

namespace corvane::desktop {

ClipLoader::ClipLoader(std::shared_ptr<Bundle> bundle, QSize thumbnail, QObject* parent)
    : QObject(parent), mBundle(std::move(bundle)), mThumbnail(thumbnail),
      mThread([this](const std::stop_token& stop) { Run(stop); }) {}

ClipLoader::~ClipLoader() = default;

void ClipLoader::Request(const ProjectClip& clip) {
    {
        const std::lock_guard lock(mMutex);
        std::erase_if(mWaiting, [&](const ProjectClip& waiting) { return waiting.id == clip.id; });
        mWaiting.push_back(clip);
    }
    mWake.notify_one();
}

void ClipLoader::Hurry(std::uint64_t id) {
    const std::lock_guard lock(mMutex);
    const auto found = std::ranges::find(mWaiting, id, &ProjectClip::id);
    if (found != mWaiting.end()) std::rotate(mWaiting.begin(), found, found + 1);
}

void ClipLoader::Run(const std::stop_token& stop) {
    while (true) {
        ProjectClip wanted;
        {
            std::unique_lock lock(mMutex);
            if (!mWake.wait(lock, stop, [this] { return !mWaiting.empty(); })) return;
            wanted = std::move(mWaiting.front());
            mWaiting.pop_front();
        }
        mUI.Post([this, loaded = Load(wanted)] { Q_EMIT Loaded(loaded); });
    }
}

LoadedClip ClipLoader::Load(const ProjectClip& wanted) const {
    LoadedClip loaded{.id = wanted.id, .source = wanted.source, .clip = {}, .problem = {}, .thumbnail = {}};
    try {
        loaded.clip = OpenClip(mBundle, wanted.name, wanted.source);
        const std::string why = loaded.clip->WhyNotRenderable();
        if (!why.empty())
            loaded.problem = QString::fromStdString(loaded.clip->Name() + ": " + why + '.');
        else
            loaded.thumbnail = MakeThumbnail(*loaded.clip, mThumbnail);
    } catch (const Failure& failure) {
        loaded.problem = QString::fromUtf8(failure.what());
    } catch (const std::bad_alloc&) {
        loaded.problem =
            QString::fromStdString(wanted.name) + tr(": there is not enough memory for a frame.");
    } catch (const std::exception& exception) {
        loaded.problem =
            QString::fromStdString(wanted.name) + QStringLiteral(": ") + QString::fromUtf8(exception.what());
    }
    return loaded;
}

} // namespace corvane::desktop
