// Every operation on every level against the reference: random frames, every sum, every width.
//
// TARN_TEST_SEED, TARN_TEST_LEVEL and TARN_TEST_OPERATION choose; TARN_TEST_CASES, TARN_TEST_GAINS
// and TARN_TEST_WIDTHS (percent) say how much. A failure, a crash at a protected page included,
// names the seed that repeats it as the first and only case.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <sstream>

#include "tests/support/guarded_frame.h"
#include "tests/support/operations.h"

namespace tarn_test {
namespace {

using tarn_reference::Footprint;
using tarn_reference::Geometry;
using tarn_reference::Operation;

// splitmix64: a case is made of its own number alone.
class Random {
 public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t Bits() {
        uint64_t z = state_ += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        return z ^ z >> 31;
    }
    int Between(int low, int high) {
        return low + static_cast<int>(Bits() % static_cast<uint64_t>(high - low + 1));
    }
    bool OneIn(int n) { return Between(1, n) == 1; }

 private:
    uint64_t state_;
};

void FillNoise(uint8_t* bytes, size_t count, Random& random) {
    for (size_t i = 0; i < count; i += 8) {
        const uint64_t bits = random.Bits();
        std::memcpy(bytes + i, &bits, std::min<size_t>(8, count - i));
    }
}

// Pixels around the black level, where the clamp and the fused step decide; a whole row repeats.
void FillDark(uint8_t* bytes, size_t count, tarn_reference::Packing packing, Random& random) {
    const unsigned bits = tarn_reference::BitsPerPixel(packing);
    const size_t period = 64 * bits / 8;
    const int black = 64 << (bits - 10);
    uint8_t pattern[96];
    for (size_t x = 0; x < 64; ++x) {
        const int value = random.Between(black * 7 / 8, black * 10 / 8);
        tarn_reference::WritePixel(packing, pattern, x, static_cast<unsigned>(value));
    }
    for (size_t i = 0; i < count; ++i) bytes[i] = pattern[i % period];
}

void FillContent(std::vector<uint8_t>& bytes, tarn_reference::Packing packing, Random& random) {
    const int kind = random.Between(0, 7);
    if (kind == 0) {
        std::fill(bytes.begin(), bytes.end(), uint8_t{0xFF});
    } else if (kind == 1) {
        std::fill(bytes.begin(), bytes.end(), uint8_t{0});
    } else if (kind <= 4) {
        FillDark(bytes.data(), bytes.size(), packing, random);
    } else {
        FillNoise(bytes.data(), bytes.size(), random);
    }
}

int RandomWidth(Random& random) {
    const int kind = random.Between(0, 999);
    if (kind < 3) return random.Between(4070, 4100);
    if (kind < 4) return random.Between(8150, 8170);
    if (kind < 10) return random.Between(-1, 0);
    if (kind < 60) return random.Between(200, 700);
    return kind < 500 ? random.Between(1, 40) : random.Between(1, 170);
}

// A pitch for rows of so many bytes: tight, aligned, odd, short, none, backwards.
int RandomPitch(int bytes, Random& random) {
    switch (random.Between(0, 15)) {
        case 0: return 0;
        case 1: return random.Between(1, 80);
        case 2: return -bytes - random.Between(0, 70);
        case 3: return (bytes + 63) / 64 * 64;
        case 4:
        case 5: return bytes;
        default: return bytes + random.Between(0, 70);
    }
}

float RandomGain(Random& random) {
    if (!random.OneIn(3)) {
        return Gains()[static_cast<size_t>(
            random.Between(0, static_cast<int>(Gains().size()) - 1))];
    }
    if (random.OneIn(8)) return std::bit_cast<float>(static_cast<uint32_t>(random.Bits()));
    return GainOf(random.Bits());
}

struct Case {
    TestedOperation operation;
    Geometry geometry;
    float gain;
    bool inPlace;
};

Case RandomCase(const std::vector<TestedOperation>& operations, Random& random) {
    Case made{};
    made.operation =
        operations[static_cast<size_t>(random.Between(0, static_cast<int>(operations.size()) - 1))];
    const Operation& rule = *made.operation.rule;
    Geometry& g = made.geometry;
    g.outWidth = RandomWidth(random);
    g.outHeight = random.OneIn(50) ? random.Between(-1, 0) : random.Between(1, 3);
    g.inWidth = random.OneIn(4) ? random.Between(-100, 20000) : g.outWidth * rule.cell;
    g.inHeight = random.OneIn(4) ? random.Between(-1, 3) : g.outHeight * rule.cell;
    const int pixels = std::max(g.outWidth, 0) * rule.cell;
    const int inBytes = (pixels + 3) / 4 * (rule.cell == 1 ? 5 : 6);
    g.inStride = RandomPitch(inBytes, random);
    g.outStride = RandomPitch(
        rule.lineBytes > 0 ? rule.lineBytes : std::max(g.outWidth, 0) * 3 / 2 + 3, random);
    made.gain = RandomGain(random);
    made.inPlace = made.operation.IsEv() && random.OneIn(3);
    return made;
}

std::string Describe(const Case& c, const std::string& runner) {
    std::ostringstream text;
    const Geometry& g = c.geometry;
    text << c.operation.rule->name << " on " << runner << ", in " << g.inWidth << " / "
         << g.inStride << " / " << g.inHeight << ", out " << g.outWidth << " / " << g.outStride
         << " / " << g.outHeight << ", gain " << std::hexfloat << c.gain
         << (c.inPlace ? ", in place" : "");
    return text.str();
}

class RandomFrames {
 public:
    // Returns what went wrong, or nothing.
    std::string Check(uint64_t seed) {
        Random random(seed);
        AnnounceCase(seed);
        const Case c = RandomCase(operations_, random);
        const Footprint footprint = tarn_reference::FootprintOf(*c.operation.rule, c.geometry);

        const uint8_t* src = PlaceAtRandom(source_, footprint.read, random);
        std::vector<uint8_t> content = source_.Content();
        FillContent(content, c.operation.rule->in, random);
        source_.SetContent(content);
        uint8_t* dst = PlaceAtRandom(destination_, footprint.written, random);
        std::vector<uint8_t> before = destination_.Content();
        FillNoise(before.data(), before.size(), random);
        if (c.inPlace) before = content;

        std::vector<uint8_t> expected = before;
        const int result = tarn_reference::Run(*c.operation.rule, src,
                                               expected.data() + destination_.RowZeroInContent(),
                                               c.geometry, c.gain);
        std::string wrong;
        for (const Runner& runner : runners_) {
            if (!Serves(runner, c.operation)) continue;
            destination_.SetContent(before);
            const int answer =
                RunFrame(runner, c.operation, c.inPlace ? dst : src, dst, c.geometry, c.gain);
            std::string difference = destination_.Difference(expected);
            if (answer != result) difference += " answers " + std::to_string(answer);
            if (!difference.empty()) wrong += Describe(c, runner.name) + ": " + difference + "\n";
        }
        destination_.Clear();
        return wrong;
    }

 private:
    static uint8_t* PlaceAtRandom(GuardedFrame& frame, const tarn_reference::Extent& extent,
                                  Random& random) {
        const auto edge = random.OneIn(3) ? GuardedFrame::Edge::Begin : GuardedFrame::Edge::End;
        const int distance = random.OneIn(2) ? 0 : random.Between(0, 63);
        return frame.Place(extent, edge, static_cast<size_t>(distance));
    }

    static constexpr size_t kSlotBytes = size_t{4} << 20;
    std::vector<TestedOperation> operations_ = SelectedOperations();
    std::vector<Runner> runners_ = SelectedRunners();
    GuardedFrame source_{GuardedFrame::Access::ReadOnly, 1, kSlotBytes};
    GuardedFrame destination_{GuardedFrame::Access::Writable, 1, kSlotBytes};
};

TEST(Differential, RandomFrames) {
    if (SelectedRunners().empty())
        GTEST_SKIP() << "SKIPPED: this machine lacks the level asked for";
    const long long cases = Amount("TARN_TEST_CASES", 1000000);
    const uint64_t seed = Seed();
    RandomFrames frames;
    int failures = 0;
    for (long long i = 0; i < cases && failures < 5; ++i) {
        const std::string wrong = frames.Check(seed + static_cast<uint64_t>(i));
        if (wrong.empty()) continue;
        ++failures;
        ADD_FAILURE() << "TARN_TEST_SEED=" << seed + static_cast<uint64_t>(i)
                      << " TARN_TEST_CASES=1\n"
                      << wrong;
    }
}

// One row that holds every sum a cell can have, under every class of gain. A line of the NEON
// engine, of 4096 pixels, holds all of Tetra's; of Hexadeca's the first, the highest and every
// fourth or so in between.
TEST(Differential, EverySum) {
    const std::vector<float> gains = ManyGains();
    for (const TestedOperation& operation : SelectedOperations()) {
        const Operation& rule = *operation.rule;
        const unsigned brightest = (1u << BitsPerPixel(rule.in)) - 1;
        const int pixels = rule.cell * rule.cell;
        const int most = pixels * static_cast<int>(brightest);
        const int sums = rule.lineBytes > 0 ? 4096 : most + 1;
        const int inBytes = (sums + 3) / 4 * rule.cell * 6;
        std::vector<uint8_t> source(static_cast<size_t>(inBytes * rule.cell));
        for (int x = 0; x < sums * pixels; ++x) {
            const int cell = x / pixels;
            const auto sum = static_cast<int>(int64_t{cell} * most / (sums - 1));
            const int left = std::max(sum - x % pixels * static_cast<int>(brightest), 0);
            uint8_t* row = source.data() + x % pixels / rule.cell * inBytes;
            WritePixel(rule.in, row, static_cast<size_t>(cell * rule.cell + x % rule.cell),
                       std::min(static_cast<unsigned>(left), brightest));
        }
        const int outBytes = rule.cell == 1 ? inBytes : sums / 2 * 3 + 6;
        const Geometry geometry{-1, rule.cell == 1 ? outBytes : inBytes, 1, sums, outBytes, 1};
        for (const float gain : gains) {
            std::vector<uint8_t> expected(static_cast<size_t>(outBytes), 0xA5);
            const auto before = expected;
            tarn_reference::Run(rule, source.data(), expected.data(), geometry, gain);
            for (const Runner& runner : SelectedRunners()) {
                if (!Serves(runner, operation)) continue;
                auto made = before;
                RunFrame(runner, operation, source.data(), made.data(), geometry, gain);
                ASSERT_EQ(made, expected)
                    << Describe({operation, geometry, gain, false}, runner.name);
            }
        }
    }
}

// One output row of every width between protected pages, both ends of every row touching one.
//
// Four output columns and what they are made of stand for themselves, so the reference makes the
// widest row once, and for each width only its last columns anew.
class EveryWidth {
 public:
    EveryWidth(const TestedOperation& operation, int widest)
        : operation_(operation),
          rule_(*operation.rule),
          groupsAlone_(*operation.rule),
          cell_(rule_.cell) {
        groupsAlone_.lineBytes = 0;
        groupIn_ = 4 * cell_ / GroupPixels(rule_.in) * GroupBytes(rule_.in);
        groupOut_ = 4 / GroupPixels(rule_.out) * GroupBytes(rule_.out);
        const int columns = (widest + 3) / 4;
        rowIn_ = columns * groupIn_;
        content_.resize(static_cast<size_t>(rowIn_ * cell_));
        Random random(static_cast<uint64_t>(widest));
        FillNoise(content_.data(), content_.size(), random);
        for (int i = 0; i < cell_; i += 2) {  // half of the rows: the clamp's side
            FillDark(content_.data() + i * rowIn_, static_cast<size_t>(rowIn_ / 3), rule_.in,
                     random);
        }
        row_.resize(static_cast<size_t>(columns * groupOut_));
    }

    void Check(const std::vector<int>& widths, const std::vector<Runner>& runners, float gain) {
        MakeExpected(0, static_cast<int>(row_.size()) / groupOut_ * 4, row_.data(), gain);
        const auto lineBytes = static_cast<size_t>(rule_.lineBytes);
        const auto longest = std::max(row_.size(), lineBytes);
        GuardedFrame source(GuardedFrame::Access::ReadOnly, static_cast<size_t>(cell_),
                            static_cast<size_t>(rowIn_ + 8));
        GuardedFrame destination(GuardedFrame::Access::Writable, 1, longest + 8);
        for (const int width : widths) {
            if (lineBytes > 0 && width > 4096) continue;
            for (const auto edge : {GuardedFrame::Edge::Begin, GuardedFrame::Edge::End}) {
                CheckWidth(width, edge, source, destination, runners, gain);
            }
        }
    }

 private:
    Geometry OneRow(int width, int inStride, int outStride) const {
        if (operation_.IsEv()) inStride = outStride = EvPitch(width);
        return {-1, inStride, 1, width, outStride, 1};
    }

    // Whole groups, and for most widths some bytes of a broken one.
    int EvPitch(int width) const {
        const int pixels = GroupPixels(rule_.in);
        return (width + pixels - 1) / pixels * GroupBytes(rule_.in) + width % GroupBytes(rule_.in);
    }

    void MakeExpected(int firstColumn, int width, uint8_t* row, float gain) const {
        std::vector<uint8_t> made(static_cast<size_t>(width * 2 + 8));
        tarn_reference::Run(groupsAlone_, content_.data() + firstColumn / 4 * groupIn_, made.data(),
                            OneRow(width, rowIn_, 9999999), gain);
        std::copy_n(made.begin(), (width + 3) / 4 * groupOut_, row);
    }

    void CheckWidth(int width, GuardedFrame::Edge edge, GuardedFrame& source,
                    GuardedFrame& destination, const std::vector<Runner>& runners, float gain) {
        const auto pitch = static_cast<int>(source.SlotPitch());
        const Geometry geometry = OneRow(width, pitch, 9999999);
        const Footprint footprint = tarn_reference::FootprintOf(rule_, geometry);
        const uint8_t* src = source.Place(footprint.read, edge);
        for (int i = 0; i < cell_; ++i) {
            std::memcpy(source.Own(src) + i * pitch, content_.data() + i * rowIn_,
                        static_cast<size_t>(footprint.read.bytes));
        }
        uint8_t* dst = destination.Place(footprint.written, edge);
        std::vector<uint8_t> expected(static_cast<size_t>(footprint.written.bytes));
        const int whole = (width - 1) / 4 * 4;
        const int done = whole / 4 * groupOut_;
        std::copy_n(row_.begin(), done, expected.begin());
        uint8_t last[16] = {};
        MakeExpected(whole, width - whole, last, gain);
        std::copy_n(last, std::min(static_cast<int>(expected.size()) - done, groupOut_),
                    expected.begin() + done);

        for (const Runner& runner : runners) {
            if (!Serves(runner, operation_)) continue;
            ASSERT_EQ(RunFrame(runner, operation_, src, dst, geometry, gain), 0);
            ASSERT_EQ(destination.Difference(expected), "")
                << Describe({operation_, geometry, gain, false}, runner.name);
            destination.Clear();
        }
    }

    TestedOperation operation_;
    const Operation& rule_;
    Operation groupsAlone_;  // without the zeros that fill up a line
    int cell_, groupIn_, groupOut_, rowIn_;
    std::vector<uint8_t> content_, row_;
};

TEST(Differential, EveryWidth) {
    std::vector<int> widths;
    const long long percent = std::clamp(Amount("TARN_TEST_WIDTHS", 100), 1LL, 100LL);
    const int step = static_cast<int>(100 / percent);
    for (int width = 1; width <= 4080; width += width < 300 ? 1 : step) widths.push_back(width);
    for (int width = 4076; width <= 4100; ++width) widths.push_back(width);
    for (const int width : {5333, 5999, 8159, 8160, 8161, 20000}) widths.push_back(width);
    const std::vector<Runner> runners = SelectedRunners();
    for (const TestedOperation& operation : SelectedOperations()) {
        EveryWidth every(operation, widths.back());
        for (const float gain : {1.0f, 1.37f}) {
            every.Check(widths, runners, gain);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace tarn_test
