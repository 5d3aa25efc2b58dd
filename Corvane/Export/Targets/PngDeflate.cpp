#include <algorithm>
#include <cstring>
#include <new>

#include <zlib.h>

#include "PngImage.h"

namespace corvane {
namespace {

constexpr std::size_t kRoom = std::size_t{1} << 16;
// A raw stream: the zlib header and the checksum are written here.
constexpr int kRawWindow = -15;

Bytef* Bytes(const std::byte* bytes) {
    return reinterpret_cast<Bytef*>(const_cast<std::byte*>(bytes));
}

void Initialize(z_stream& stream, int level) {
    if (deflateInit2(&stream, level, Z_DEFLATED, kRawWindow, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
}

// Adler-32 of zeros after an empty beginning: the sum stays 1, and the sum of the sums counts.
uLong ChecksumOfZeros(std::size_t count) {
    return static_cast<uLong>(count % 65521) << 16 | 1;
}

} // namespace

std::span<const std::byte> ZeroBlocks::For(std::size_t count) {
    std::vector<std::byte>& blocks = mBlocks[count];
    if (!blocks.empty()) return blocks;
    const std::vector<std::byte> zeros(count);
    z_stream stream{};
    Initialize(stream, Z_BEST_COMPRESSION);
    blocks.resize(deflateBound(&stream, count) + 16);
    stream.next_in = Bytes(zeros.data());
    stream.avail_in = static_cast<uInt>(count);
    stream.next_out = Bytes(blocks.data());
    stream.avail_out = static_cast<uInt>(blocks.size());
    deflate(&stream, Z_FULL_FLUSH);
    blocks.resize(stream.total_out);
    deflateEnd(&stream);
    return blocks;
}

struct PngDeflate::Stream : z_stream {
    Stream() : z_stream{} { Initialize(*this, Z_BEST_SPEED); }
    ~Stream() { deflateEnd(this); }
};

PngDeflate::PngDeflate() : mStream(std::make_unique<Stream>()) {}

PngDeflate::~PngDeflate() = default;

void PngDeflate::Begin() {
    deflateReset(mStream.get());
    mSize = 0;
    mChecksum = 1;
    mOpen = false;
    // Deflate with a window of 32 KiB, fastest: 0x7801 is a multiple of 31 as the format asks.
    constexpr std::byte kHeader[] = {std::byte{0x78}, std::byte{0x01}};
    Append(kHeader);
}

void PngDeflate::AddStartAndZeros(std::span<const std::byte> start, std::size_t zeros) {
    if (mOpen) Deflate({}, Z_FULL_FLUSH);
    mOpen = false;
    // A stored block: three bits 0 and padding, then the length and its complement.
    const auto length = static_cast<std::uint8_t>(start.size());
    const std::byte header[] = {std::byte{0}, std::byte{length}, std::byte{0}, ~std::byte{length},
                                std::byte{0xFF}};
    Append(header);
    Append(start);
    mChecksum = adler32(mChecksum, Bytes(start.data()), length);
    if (zeros == 0) return;
    Append(mZeros.For(zeros));
    mChecksum = adler32_combine(mChecksum, ChecksumOfZeros(zeros), static_cast<z_off_t>(zeros));
}

void PngDeflate::Add(std::span<const std::byte> bytes) {
    mOpen = true;
    Deflate(bytes, Z_NO_FLUSH);
    mChecksum = adler32(mChecksum, Bytes(bytes.data()), static_cast<uInt>(bytes.size()));
}

std::span<const std::byte> PngDeflate::End() {
    Deflate({}, Z_FINISH);
    std::byte checksum[4];
    for (int i = 0; i < 4; ++i) checksum[i] = static_cast<std::byte>(mChecksum >> (24 - 8 * i));
    Append(checksum);
    return {mOut.data(), mSize};
}

void PngDeflate::Deflate(std::span<const std::byte> bytes, int flush) {
    mStream->next_in = Bytes(bytes.data());
    mStream->avail_in = static_cast<uInt>(bytes.size());
    do {
        if (mOut.size() - mSize < kRoom) mOut.resize(std::max(mOut.size() * 2, 4 * kRoom));
        mStream->next_out = Bytes(mOut.data() + mSize);
        mStream->avail_out = static_cast<uInt>(std::min<std::size_t>(mOut.size() - mSize, 1u << 30));
        const uInt before = mStream->avail_out;
        deflate(mStream.get(), flush);
        mSize += before - mStream->avail_out;
    } while (mStream->avail_out == 0);
}

void PngDeflate::Append(std::span<const std::byte> bytes) {
    if (mOut.size() - mSize < bytes.size()) mOut.resize(std::max(mOut.size() * 2, 4 * kRoom));
    std::memcpy(mOut.data() + mSize, bytes.data(), bytes.size());
    mSize += bytes.size();
}

} // namespace corvane
