// Frames that synth makes of pictures and charts, and their noise. What it makes of mosaics is in
// tool_test.cpp.
#include <png.h>

#include "tests/tool/oracle/binned_oracle.h"
#include "tool_runner.h"

namespace {

class SynthTest : public ToolTest {
 protected:
    Picture Synth(const std::string& arguments) {
        EXPECT_EQ(Tarn("synth -o frame.pgm " + arguments), 0) << said_;
        return ReadPgm("frame.pgm");
    }
};

struct Moments {
    double mean, variance;
};

// Of the frame's pixels in a rectangle.
Moments Measure(const Picture& frame, int left, int top, int right, int bottom) {
    double sum = 0, squares = 0;
    const double count = double(right - left) * (bottom - top);
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            sum += frame.At(x, y);
            squares += double(frame.At(x, y)) * frame.At(x, y);
        }
    }
    return {sum / count, squares / count - sum / count * (sum / count)};
}

constexpr int kSide = 48;

// A picture whose colours are nowhere alike.
std::string Colours() {
    std::string pixels;
    for (int i = 0; i < kSide * kSide; ++i) {
        const int x = i % kSide, y = i / kSide;
        for (const int value : {x * 5, y * 5, 255 - x * 2 - y * 3}) pixels += char(value);
    }
    return pixels;
}

TEST_F(SynthTest, APictureLosesWhatItsFiltersHold) {
    const std::string pixels = Colours();
    Write("photo.ppm", "P6 48 48 255\n" + pixels);
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = png.height = kSide;
    png.format = PNG_FORMAT_RGB;
    ASSERT_TRUE(png_image_write_to_file(&png, "photo.png", 0, pixels.data(), 0, nullptr));
    for (const int cell : {1, 2, 3, 4}) {
        const std::string arguments = " -f BayerGB10p --cell " + std::to_string(cell);
        const Picture frame = Synth("photo.ppm" + arguments + " -s 72x72 --exposure 1.5");
        ASSERT_EQ(frame.codes.size(), 72u * 72);
        for (int y = 0; y < 72; ++y) {
            for (int x = 0; x < 72; ++x) {
                const int colour = y / cell % 2 ? x / cell % 2 ? 1 : 0 : x / cell % 2 ? 2 : 1;
                const size_t from = size_t(y % kSide * kSide + x % kSide) * 3 + size_t(colour);
                const double v = static_cast<uint8_t>(pixels[from]) / 255.0;
                const double light = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
                ASSERT_NEAR(frame.At(x, y), std::min(64 + light * 1.5 * 959, 1023.0), 0.52)
                    << x << ", " << y << " cell " << cell;
            }
        }
        EXPECT_EQ(Synth("photo.png" + arguments + " -s 72x72 --exposure 1.5").codes, frame.codes);
    }
}

TEST_F(SynthTest, TheChartsHoldTheLightTheyTell) {
    // Greys, each half as bright, in the middle of their patches.
    const Picture patches = Synth("--chart patches -f vx12 --cell 2 -s 600x400");
    for (int i = 0; i < 6; ++i) {
        EXPECT_NEAR(patches.At(100 * i + 50, 350), 256 + 0.9 / (1 << i) * 3839, 0.5);
    }
    EXPECT_NEAR(patches.At(48, 48), 256 + 0.8 * 3839, 0.5);   // red behind red
    EXPECT_NEAR(patches.At(50, 50), 256 + 0.05 * 3839, 0.5);  // red behind blue
    // The edge passes through the middle, and leans by one pixel in cot 5 degrees = 11.43 rows.
    const Picture edge = Synth("--chart edge -f vx12 --cell 1 -s 400x400");
    const auto crossing = [&](int y) {
        double dark = 0;  // pixels' worth
        for (int x = 0; x < 400; ++x) {
            dark += 1 - (edge.At(x, y) - 256 - .04 * 3839) / (.56 * 3839);
        }
        return dark;
    };
    EXPECT_NEAR((crossing(199) + crossing(200)) / 2, 200, 0.1);
    EXPECT_NEAR((crossing(0) - crossing(343)) * 11.43, 343, 3);
    // A ramp clips in the middle; another comes down to black, and nothing lies below it.
    const Picture ramps = Synth("--chart ramps -f qc10 --cell 1 -s 800x80");
    EXPECT_LT(ramps.At(398, 4), 1023);
    EXPECT_EQ(ramps.At(402, 4), 1023);
    EXPECT_EQ(ramps.At(798, 44), 64);
    EXPECT_NEAR(ramps.At(0, 44), 64 + 959 / 16.0, 0.6);
}

// Grey patches in a row, each with its own signal: the variance follows the model.
TEST_F(SynthTest, NoiseFollowsItsModel) {
    constexpr double kElectrons = 2.5, kRead = 3;
    const Picture frame = Synth("--chart patches -f vx12 --cell 1 -s 1200x800 --noise 2.5,3");
    for (int i = 0; i < 6; ++i) {
        const double signal = 0.9 / (1 << i) * 3839;
        const Moments m = Measure(frame, 200 * i + 20, 620, 200 * i + 180, 780);
        const double variance = signal / kElectrons + kRead * kRead + 1 / 12.0;
        EXPECT_NEAR(m.mean, 256 + signal, 4 * std::sqrt(variance) / 160) << signal;
        EXPECT_NEAR(m.variance / variance, 1, 0.036) << signal;  // four deviations
    }
    // Where electrons are few the distribution is Poisson's: with 0.6 of them in the mean, e^-0.6
    // of the pixels get none.
    const Picture few =
        Synth("--chart patches -f vx12 --cell 1 -s 1200x800 --exposure 0.05 --noise 0.003472,0");
    int none = 0;
    for (int y = 620; y < 780; ++y) {
        for (int x = 20; x < 180; ++x) none += few.At(x, y) == 256;
    }
    EXPECT_NEAR(none / 25600.0, std::exp(-0.6), 0.0124);  // four deviations
}

// The same codes on every machine: these were computed from the published algorithms by a program
// in another language.
TEST_F(SynthTest, NoiseIsTheSameEverywhere) {
    const Picture frame = Synth(
        "--chart ramps -f qc10 --cell 1 -s 16x16 --exposure 0.25 --noise 0.5,2 --seed 1234567");
    const std::vector<int> row(frame.codes.begin(), frame.codes.begin() + 16);
    EXPECT_EQ(row, (std::vector<int>{74, 109, 154, 171, 198, 226, 263, 280, 329, 351, 341, 383, 482,
                                     492, 460, 514}));
    EXPECT_NE(
        Synth(
            "--chart ramps -f qc10 --cell 1 -s 16x16 --exposure 0.25 --noise 0.5,2 --seed 1234568")
            .codes,
        frame.codes);
}

using SynthErrorsTest = RefusalTest;

TEST_F(SynthErrorsTest, WrongRequestsAreRefusedInOneLine) {
    Write("photo.ppm", "P6 16 8 255\n" + std::string(16 * 8 * 3, 'x'));
    Write("cut.ppm", "P6 16 8 255\nxxx");
    Write("cut.png", "\x89PNG\r\n\x1a\n" + std::string(20, 'x'));
    const std::string chart = "synth -o kept.raw --cell 2 --chart all ";
    const std::string photo = "synth -o kept.raw --cell 2 -f qc10 photo.ppm ";
    const struct {
        std::string arguments, reason;
    } kCases[] = {
        {"synth -o kept.raw --cell 2 -f qc10", "SRC or of a --chart, one of them"},
        {chart + "-f qc10 mosaic.pgm", "SRC or of a --chart, one of them"},
        {"synth -o kept.raw --cell 2 -f qc10 --chart stripes", "none of all, patches"},
        {chart + "-f qc10 --black 64", "only a camera raw or a PGM has such levels"},
        {photo + "--white 900", "only a camera raw or a PGM has such levels"},
        {chart + "-f SRGGB10P --cfa BGGR", "SRGGB10P is RGGB, the frame is BGGR"},
        {chart + "-f qc10 --cfa RGBW", "none of RGGB"},
        {photo + "--noise 4", "is not E,R"},
        {photo + "--noise 4,", "\"\" is not a number from 0"},
        {photo + "--noise 0,1", "\"0\" is not a number from 0.001"},
        {photo + "--noise 4,-1", "\"-1\" is not a number"},
        {photo + "--noise nan,1", "to 1,000,000"},
        {photo + "--seed 3", "goes with --noise"},
        {photo + "--noise 4,1 --seed -1", "not a whole number from 0"},
        {photo + "--exposure inf", "is not a number from 0.0001"},
        {photo + "--cell 4", "--cell"},
        {"synth -o kept.raw --cell 2 -f qc10 cut.ppm", "cut.ppm holds 3 bytes of samples"},
        {"synth -o kept.raw --cell 2 -f qc10 cut.png", "is a PNG that cannot be read"},
        {"synth -o photo.ppm --to raw --cell 2 -f qc10 photo.ppm", "is the input itself"},
    };
    for (const auto& c : kCases) ExpectRefused(c.arguments, 2, c.reason);
}

}  // namespace
