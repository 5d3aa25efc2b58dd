#pragma once

#include <cstdint>
#include <memory>

#include "Engine/Frame.h"

namespace corvane {

/// What a worker thread makes of one frame for the target. Recycled from frame to frame, so that a steady
/// export allocates nothing. Used by one thread at a time.
class Packet {
  public:
    virtual ~Packet() = default;
};

/// Where the frames of an export go: a file, files or a stream. The calls come in this order: `NewPacket` and
/// `Prepare` from many threads, `Consume` for one frame at a time and in the frames' order, `Finish` once. A
/// target that is destroyed without `Finish` leaves nothing behind. All of them throw `Failure`.
class Target {
  public:
    virtual ~Target() = default;

    virtual std::unique_ptr<Packet> NewPacket() = 0;
    /// The part of the work that needs no order: conversion, compression of single pictures.
    virtual void Prepare(const FrameView& frame, std::int64_t index, Packet& packet) = 0;
    /// The part that needs it: encoding and writing.
    virtual void Consume(Packet& packet) = 0;
    /// Completes the output and puts it in its place.
    virtual void Finish() = 0;

    /// Whether a packet refers to the frame's own pixels, so that the frame must live until it is consumed.
    virtual bool KeepsFrames() const { return false; }
    /// Whether alpha arrives in the output. Asked only where the frames have some.
    virtual bool KeepsAlpha() const { return true; }
    /// How many of `jobs` threads that render and prepare are of use here.
    virtual unsigned UsefulJobs(unsigned jobs) const { return jobs; }
    virtual std::uint64_t BytesWritten() const = 0;
};

} // namespace corvane
