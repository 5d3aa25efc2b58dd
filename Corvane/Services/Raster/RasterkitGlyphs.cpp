#include "RasterkitGlyphs.h"

#include <cstring>
#include <deque>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "NumberPrint.h"
#include "PixelFormats.h"

namespace corvane::raster {
namespace {

constexpr std::size_t kMaxPictureBytes = std::size_t{4} << 20;
constexpr std::size_t kMaxCacheBytes = std::size_t{64} << 20;

Pattern Shade(std::uint32_t coverage, RK_PixelFormat format) {
    const auto level = static_cast<float>(coverage);
    const float gray = (kBoxGray * (255.0f - level) + kGlyphGray * level) / (255.0f * 255.0f);
    const float color[4] = {gray, gray, gray, 1.0f};
    return ConvertColor(color, format);
}

std::size_t PictureRowBytes(std::uint32_t height, RK_PixelFormat format) {
    return GlyphAdvance(height) * BytesPerPixel(format);
}

std::shared_ptr<const GlyphPicture> MakePicture(std::uint32_t glyph, std::uint32_t height,
                                                RK_PixelFormat format) {
    const auto picture = std::make_shared<GlyphPicture>();
    picture->rowBytes = PictureRowBytes(height, format);
    picture->pixels.resize(picture->rowBytes * height);

    const Shades shades = MakeShades(format);
    const std::size_t pixelBytes = BytesPerPixel(format);
    std::vector<std::uint8_t> coverage(GlyphAdvance(height));
    std::byte* out = picture->pixels.data();
    for (std::uint32_t row = 0; row < height; ++row) {
        CoverRow(glyph, height, row, 0, coverage);
        for (const std::uint8_t level : coverage) {
            std::memcpy(out, &shades[level], pixelBytes);
            out += pixelBytes;
        }
    }
    return picture;
}

class GlyphCache {
  public:
    using Key = std::uint64_t;

    std::shared_ptr<const GlyphPicture> Find(Key key) const {
        const std::shared_lock lock(mMutex);
        const auto found = mPictures.find(key);
        return found == mPictures.end() ? nullptr : found->second;
    }

    void Keep(Key key, const std::shared_ptr<const GlyphPicture>& picture) {
        const std::lock_guard lock(mMutex);
        const std::size_t bytes = picture->pixels.size();
        if (!mPictures.try_emplace(key, picture).second) return; // another thread was quicker
        mOrder.push_back(key);
        mBytes += bytes;
        while (mBytes > kMaxCacheBytes) {
            const auto oldest = mPictures.find(mOrder.front());
            mBytes -= oldest->second->pixels.size();
            mPictures.erase(oldest);
            mOrder.pop_front();
        }
    }

  private:
    mutable std::shared_mutex mMutex;
    std::unordered_map<Key, std::shared_ptr<const GlyphPicture>> mPictures;
    std::deque<Key> mOrder; // the oldest first
    std::size_t mBytes = 0;
};

} // namespace

Shades MakeShades(RK_PixelFormat format) {
    Shades shades;
    for (std::uint32_t coverage = 0; coverage < shades.size(); ++coverage)
        shades[coverage] = Shade(coverage, format);
    return shades;
}

Pattern BoxShade(RK_PixelFormat format) {
    return Shade(0, format);
}

bool IsGlyphTooLarge(std::uint32_t height, RK_PixelFormat format) {
    return PictureRowBytes(height, format) > kMaxPictureBytes / height;
}

std::shared_ptr<const GlyphPicture> GetGlyphPicture(std::uint32_t glyph, std::uint32_t height,
                                                    RK_PixelFormat format) {
    static GlyphCache sCache;
    // A kept picture is lower than 2^24 pixels, and a concrete format has 12 bits.
    const GlyphCache::Key key = std::uint64_t{format} << 32 | std::uint64_t{height} << 8 | glyph;
    if (auto picture = sCache.Find(key)) return picture;
    auto picture = MakePicture(glyph, height, format);
    sCache.Keep(key, picture);
    return picture;
}

} // namespace corvane::raster
