#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Engine/Frame.h"

namespace corvane {

/// What a worker thread makes of one frame for the target. Used again for later frames, so that a steady
/// export allocates nothing. Used by one thread at a time.
class Packet {
  public:
    virtual ~Packet() = default;
};

/// Where the frames of an export go: a file, files or a stream. `NewPacket` and `Prepare` are called from
/// many threads, `Consume` by one thread at a time and in the frames' order, `Finish` once at the end. A
/// target that is destroyed without `Finish` leaves nothing behind. Those four throw `Failure`.
class Target {
  public:
    virtual ~Target() = default;

    /// An empty packet, for `Prepare`.
    virtual std::unique_ptr<Packet> NewPacket() = 0;
    /// The part of the work that can be done in any order: conversion, compression of single pictures.
    virtual void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) = 0;
    /// The part that needs the frames' order: encoding and writing.
    virtual void Consume(Packet& packet) = 0;
    /// Completes the output and puts it in its place. Returns what could not be kept of older files, as a
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
};

} // namespace corvane
