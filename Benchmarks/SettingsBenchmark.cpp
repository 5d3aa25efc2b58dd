// Decoding and encoding one settings record.
#include <cstddef>

#include <benchmark/benchmark.h>

#include "SynthexInfo.h"

namespace {

using namespace lumcore::serialization;

void DecodeAndEncode(benchmark::State& state) {
    const std::string text = GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(SynthexInfo()), false);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.c_str());
    for (auto _ : state) {
        const SynthexInfo info = Serializer<SynthexInfo>::FromUTF8String(bytes, text.size() + 1);
        benchmark::DoNotOptimize(GetJSONUTF8String(JSONConvert<SynthexInfo>::ToJSON(info), false));
    }
}
BENCHMARK(DecodeAndEncode)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
