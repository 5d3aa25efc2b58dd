#include <iterator>
#include <numeric>

#include "Calls.h"
#include "corvane/engine.h"
#include "lummediatypes.h"

using namespace corvane;
using namespace lummediatypes;

namespace {

constexpr FrameRate kRates[] = {kFrameRate_Video10,     kFrameRate_Video12,      kFrameRate_Video12_5,
                                kFrameRate_Video15,     kFrameRate_23976,        kFrameRate_Film24,
                                kFrameRate_VideoPAL,    kFrameRate_VideoNTSC,    kFrameRate_Video30,
                                kFrameRate_VideoPAL_HD, kFrameRate_VideoNTSC_HD, kFrameRate_Video60,
                                kFrameRate_Video100,    kFrameRate_Video1000};

} // namespace

size_t corvane_rate_count(void) {
    return std::size(kRates);
}

int corvane_rate_at(size_t index, uint32_t* numerator, uint32_t* denominator) {
    return bindings::Call(-1, [&] {
        if (index >= std::size(kRates))
            throw UsageFailure(fmt::format("There is no rate {}; there are {}.", index, std::size(kRates)));
        const std::int64_t ticks = kRates[index].GetTicksPerFrame();
        const std::int64_t common = std::gcd(kTicksPerSecond, ticks);
        const char* const function = "corvane_rate_at";
        bindings::Given(numerator, function, "the numerator") =
            static_cast<uint32_t>(kTicksPerSecond / common);
        bindings::Given(denominator, function, "the denominator") = static_cast<uint32_t>(ticks / common);
        return 0;
    });
}
