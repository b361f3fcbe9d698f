// A dump of any bytes, with anything known of it beforehand: what is guessed fits the file.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdlib>

#include "frames/guess.h"
#include "frames/message.h"
#include "frames/picture.h"

using namespace tarn::frames;

static Known ConsumeKnown(FuzzedDataProvider& data) {
    Known known;
    const auto side = [&] {
        return data.ConsumeBool() ? data.ConsumeIntegralInRange(1, 200)
                                  : data.ConsumeIntegralInRange(1, 1'000'000'000);
    };
    if (data.ConsumeBool())
        known.layout = static_cast<tarn::Layout>(data.ConsumeIntegralInRange(0, 3));
    if (data.ConsumeBool()) known.pitch = side();
    if (data.ConsumeBool()) known.width = side();
    if (data.ConsumeBool()) known.height = side();
    if (data.ConsumeBool()) known.cell = data.ConsumeIntegralInRange(1, 4);
    return known;
}

// More bytes than the input itself has. Few where all pitches are to be tried, which takes long.
static Bytes ConsumeDump(FuzzedDataProvider& data, const Known& known) {
    const bool onePitch = known.layout && (known.pitch || known.height);
    Bytes dump(data.ConsumeIntegralInRange<size_t>(0, onePitch ? 3000 : 250));
    const Bytes seed = data.ConsumeRemainingBytes<uint8_t>();
    for (size_t i = 0; i < dump.size() && !seed.empty(); ++i)
        dump[i] = static_cast<uint8_t>(seed[i % seed.size()] + i / seed.size());
    return dump;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    const Known known = ConsumeKnown(data);
    const Bytes dump = ConsumeDump(data, known);
    try {
        const Guess guess = GuessFrame("dump", dump, known);
        if (guess.ranked.empty()) std::abort();
        for (const Hypothesis& hypothesis : guess.ranked) {
            const PackedFrame& frame = hypothesis.frame;
            if (frame.width < 1 || frame.height < 1 || frame.RowBytes() > frame.pitch ||
                frame.LeastBytes() > int64_t(dump.size()) || !std::isfinite(hypothesis.cost))
                std::abort();
        }
        const PackedFrame& best = guess.ranked.front().frame;
        if (Unpack(best, dump.data()).empty()) std::abort();
    } catch (const UserError&) {
    }
    return 0;
}
