#include "ColorSamples.h"

namespace corvane {

bool ColorSamples::WantsNext() {
    if (mSamples.size() >= kMost) Thin();
    return mNext++ % mStep == 0;
}

void ColorSamples::Add(const ColorSample& sample) {
    mSamples.push_back(sample);
    mPicture.push_back(mNext - 1);
}

void ColorSamples::Thin() {
    mStep *= 2;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < mSamples.size(); ++i) {
        if (mPicture[i] % mStep != 0) continue;
        mSamples[kept] = mSamples[i];
        mPicture[kept++] = mPicture[i];
    }
    mSamples.resize(kept);
    mPicture.resize(kept);
}

} // namespace corvane
