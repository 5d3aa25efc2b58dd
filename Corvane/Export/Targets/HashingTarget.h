#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "ContentHash.h"
#include "Target.h"

namespace corvane {

/// Hands everything to another target and hashes each picture as its decoders give it. Pictures that repeat
/// themselves are hashed once.
class HashingTarget final : public Target {
  public:
    /// `target` outlives it. `repeats`: whether all pictures may be equal, which then is tried.
    HashingTarget(Target& target, bool repeats) : mTarget(target), mRepeats(repeats) {}

    /// The hash of each picture that was consumed. To be asked after `Complete`.
    std::vector<ContentHash> TakeHashes() { return std::move(mHashes); }

    std::unique_ptr<Packet> NewPacket() override;
    void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) override;
    void Consume(Packet& packet) override;
    void Complete() override { mTarget.Complete(); }
    std::vector<std::filesystem::path> WorkingPaths() const override { return mTarget.WorkingPaths(); }
    std::string Finish() override { return mTarget.Finish(); }
    bool KeepsFrames() const override { return mTarget.KeepsFrames(); }
    bool KeepsAlpha() const override { return mTarget.KeepsAlpha(); }
    unsigned UsefulJobs(unsigned jobs) const override { return mTarget.UsefulJobs(jobs); }
    std::uint64_t BytesWritten() const override { return mTarget.BytesWritten(); }
    Planes PlanesOf(const FrameView& frame, Packet& packet) const override;
    std::string PixelsName() const override { return mTarget.PixelsName(); }

  private:
    // A picture and its hash.
    struct Known {
        std::vector<std::byte> bytes;
        ContentHash hash;
    };

    ContentHash HashOf(const Planes& planes);

    Target& mTarget;
    std::atomic<bool> mRepeats;
    std::mutex mMutex; // of the one below
    std::shared_ptr<const Known> mKnown;
    std::vector<ContentHash> mHashes;
};

} // namespace corvane
