#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Engine/Frame.h"

namespace corvane {

/// What a worker thread makes of one frame for the target. Used again for later frames, so that a steady
/// export allocates nothing. Used by one thread at a time.
class Packet {
  public:
    virtual ~Packet() = default;
};

/// A plane of a picture, not owned: rows of so many bytes, each `stride` bytes behind the one before it.
struct PlaneRows {
    const std::byte* first = nullptr;
    std::ptrdiff_t stride = 0;
    std::size_t rowBytes = 0;
    std::uint32_t rows = 0;
};

/// A picture in the layout of libav's raw video.
using Planes = std::vector<PlaneRows>;

/// Where the frames of an export go: a file, files or a stream. `NewPacket` and `Prepare` are called from
/// many threads, `Consume` by one thread at a time and in the frames' order, `Complete` and then
/// `Finish` once at the end. A target that is destroyed without `Finish` leaves nothing behind. Those five
/// throw `Failure`.
class Target {
  public:
    virtual ~Target() = default;

    /// An empty packet, for `Prepare`.
    virtual std::unique_ptr<Packet> NewPacket() = 0;
    /// The part of the work that can be done in any order: conversion, compression of single pictures.
    virtual void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) = 0;
    /// The part that needs the frames' order: encoding and writing.
    virtual void Consume(Packet& packet) = 0;
    /// Writes all that is still to be written. The output has no name yet.
    virtual void Complete() {}
    /// Where this process finds the files of the output between `Complete` and `Finish`, in the frames'
    /// order.
    virtual std::vector<std::filesystem::path> WorkingPaths() const { return {}; }
    /// Puts the complete output in its place. Returns what could not be kept of older files, as a
    /// clause, or nothing.
    [[nodiscard]] virtual std::string Finish() = 0;

    /// Whether a packet refers to the frame's own pixels, so that the frame must live until it is consumed.
    virtual bool KeepsFrames() const { return false; }
    /// Whether alpha arrives in the output. Asked only if the frames have alpha.
    virtual bool KeepsAlpha() const { return true; }
    /// How many of `jobs` threads that render and prepare are of use for this target.
    virtual unsigned UsefulJobs(unsigned jobs) const { return jobs; }
    /// Bytes written so far, all files together. To be asked between calls of `Consume`, or after `Finish`.
    virtual std::uint64_t BytesWritten() const = 0;

    /// How many frames lie between those at which a part of the output may begin that is exported by itself,
    /// so that the parts can be put together without encoding again; 0 if they can't.
    virtual std::int64_t PartFrames() const { return 0; }
    /// Takes over the frames of a part, which a target of the same kind wrote from a frame that is a multiple
    /// of `PartFrames`, as they are encoded. Called in place of `Consume`, for each part in order. Returns
    /// false as soon as `cancel` is set. Throws `Failure`, which names the part, if that does not hold
    /// `frames` frames of the kind.
    virtual bool Append(const std::filesystem::path& /*part*/, std::int64_t /*frames*/,
                        const std::atomic<bool>& /*cancel*/) {
        return false;
    }

    /// The picture that was just prepared from `frame`, as decoders of the output give it, if they lose
    /// nothing. Valid until the packet's next use. Called like `Prepare`. Empty if there is nothing to
    /// decode.
    virtual Planes PlanesOf(const FrameView& /*frame*/, Packet& /*packet*/) const { return {}; }
    /// What libav calls the pixels of such pictures; of frames as delivered, what the host calls them.
    virtual std::string PixelsName() const { return {}; }
};

} // namespace corvane
