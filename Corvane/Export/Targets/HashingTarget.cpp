#include "HashingTarget.h"

#include <cstring>
#include <span>
#include <utility>

namespace corvane {
namespace {

struct HashedPacket final : Packet {
    std::unique_ptr<Packet> packet;
    ContentHash hash{};
};

// Hands out the bytes of planes: rows, or all of them at once if nothing lies between them.
class PlaneBytes {
  public:
    explicit PlaneBytes(const Planes& planes) : mPlanes(planes) {}

    std::span<const std::byte> Next() {
        while (mPlane < mPlanes.size() && mRow == mPlanes[mPlane].rows) {
            ++mPlane;
            mRow = 0;
        }
        if (mPlane == mPlanes.size()) return {};
        const PlaneRows& plane = mPlanes[mPlane];
        const std::byte* const row = plane.first + plane.stride * std::ptrdiff_t{mRow};
        const bool whole = plane.stride == static_cast<std::ptrdiff_t>(plane.rowBytes);
        const std::uint32_t rows = whole ? plane.rows : 1;
        mRow += rows;
        return {row, plane.rowBytes * rows};
    }

  private:
    const Planes& mPlanes;
    std::size_t mPlane = 0;
    std::uint32_t mRow = 0;
};

std::vector<std::byte> CopyOf(const Planes& planes) {
    std::vector<std::byte> copy;
    PlaneBytes bytes(planes);
    for (auto piece = bytes.Next(); !piece.empty(); piece = bytes.Next())
        copy.insert(copy.end(), piece.begin(), piece.end());
    return copy;
}

bool AreEqual(const Planes& planes, std::span<const std::byte> copy) {
    PlaneBytes bytes(planes);
    for (auto piece = bytes.Next(); !piece.empty(); piece = bytes.Next()) {
        if (std::memcmp(piece.data(), copy.data(), piece.size()) != 0) return false;
        copy = copy.subspan(piece.size());
    }
    return true;
}

ContentHash HashPlanes(const Planes& planes) {
    PlaneBytes bytes(planes);
    return HashContent([&] { return bytes.Next(); });
}

} // namespace

std::unique_ptr<Packet> HashingTarget::NewPacket() {
    auto packet = std::make_unique<HashedPacket>();
    packet->packet = mTarget.NewPacket();
    return packet;
}

void HashingTarget::Prepare(const FrameView& frame, std::int64_t index, Packet& packet) {
    auto& hashed = static_cast<HashedPacket&>(packet);
    mTarget.Prepare(frame, index, *hashed.packet);
    hashed.hash = HashOf(mTarget.PlanesOf(frame, *hashed.packet));
}

void HashingTarget::Consume(Packet& packet) {
    auto& hashed = static_cast<HashedPacket&>(packet);
    mTarget.Consume(*hashed.packet);
    mHashes.push_back(hashed.hash);
}

Planes HashingTarget::PlanesOf(const FrameView& frame, Packet& packet) const {
    return mTarget.PlanesOf(frame, *static_cast<HashedPacket&>(packet).packet);
}

ContentHash HashingTarget::HashOf(const Planes& planes) {
    if (!mRepeats) return HashPlanes(planes);
    std::shared_ptr<const Known> known;
    {
        const std::lock_guard lock(mMutex);
        if (!mKnown) mKnown = std::make_shared<const Known>(Known{CopyOf(planes), HashPlanes(planes)});
        known = mKnown;
    }
    if (AreEqual(planes, known->bytes)) return known->hash;
    mRepeats = false;
    return HashPlanes(planes);
}

} // namespace corvane
