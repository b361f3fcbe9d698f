// What synth makes and bin gives, for every operation and for the geometries that surprise.
#include <png.h>

#include "tests/tool/oracle/binned_oracle.h"
#include "tool_runner.h"

namespace {

struct Way {
    std::string layout;
    int cell;
    int outBits;

    int Block() const { return 2 * cell; }
    int Bits() const { return std::stoi(layout.substr(2)); }
    bool FloorsRows() const { return layout == "qc10" && cell == 4; }
};
const Way kWays[] = {{"qc10", 2, 10}, {"qc10", 3, 10}, {"qc10", 4, 10}, {"qc12", 2, 12},
                     {"vx10", 2, 10}, {"vx10", 2, 12}, {"vx10", 3, 10}, {"vx10", 4, 10},
                     {"vx10", 4, 12}, {"vx12", 2, 12}, {"vx12", 2, 10}};

std::string SizeOption(int width, int height) {
    return " -s " + std::to_string(width) + "x" + std::to_string(height) + " ";
}

class FrameTest : public ToolTest {
 protected:
    // Makes frame.raw and frame.pgm of the size out of a random mosaic.pgm, which is smaller.
    void Synth(const Way& way, int width, int height, const std::string& pitch) {
        const int block = way.Block();
        WriteMosaic("mosaic.pgm", 5 * block + 1, 3 * block + 1, way.Bits());
        const std::string arguments =
            "synth mosaic.pgm -q -f " + way.layout + " --cell " + std::to_string(way.cell) +
            " --black " + std::to_string(1 << (way.Bits() - 4)) + SizeOption(width, height);
        ASSERT_EQ(Tarn(arguments + "-o frame.raw --pitch " + pitch), 0) << said_;
        ASSERT_EQ(Tarn(arguments + "-o frame.pgm"), 0) << said_;
    }

    int Bin(const Way& way, int width, int height, const std::string& more) {
        return Tarn("bin -f " + way.layout + " --cell " + std::to_string(way.cell) +
                    " --out-bits " + std::to_string(way.outBits) + SizeOption(width, height) +
                    more);
    }

    void ExpectSums(const Way& way, int width, int height, const std::string& pitch,
                    const std::string& gain) {
        SCOPED_TRACE(way.layout + " to " + std::to_string(way.outBits) + " bits, cell " +
                     std::to_string(way.cell) + SizeOption(width, height) + pitch + " " + gain);
        Synth(way, width, height, pitch);
        ASSERT_EQ(
            Bin(way, width, height, "frame.raw -o binned.pgm --pitch " + pitch + " --gain " + gain),
            0)
            << said_;
        const Picture mosaic = ReadPgm("mosaic.pgm"), frame = ReadPgm("frame.pgm");
        const Picture binned = ReadPgm("binned.pgm");
        const BinnedOracle oracle(mosaic, frame, {way.cell, std::stof(gain), way.FloorsRows()});
        EXPECT_EQ(oracle.CheckFrame(), "");
        EXPECT_EQ(oracle.CheckBinned(binned), "");
        EXPECT_EQ(binned.maximum, (1 << way.outBits) - 1);
    }
};

TEST_F(FrameTest, BinnedFramesAreTheMosaicsSums) {
    for (const Way& way : kWays) {
        ExpectSums(way, 7 * way.Block(), 4 * way.Block(), "103", "1.0");
        ExpectSums(way, 7 * way.Block(), 4 * way.Block(), "tight", "1.37");
    }
}

// The library's own dispatch goes by the width; the tool's user does not.
TEST_F(FrameTest, ThePatternIsTheUsersWhateverTheWidth) {
    ExpectSums({"qc10", 2, 10}, 16004, 4, "tight", "1.0");
    ExpectSums({"qc12", 2, 12}, 12004, 4, "tight", "1.0");
    ExpectSums({"vx10", 3, 10}, 16008, 6, "tight", "1.0");
    ExpectSums({"qc10", 4, 10}, 12000, 8, "tight", "1.0");
}

// To the library such a pitch says "missing".
TEST_F(FrameTest, PitchesThatEqualAHeightAreMeant) {
    ExpectSums({"qc10", 2, 10}, 8, 12, "12", "1.0");
    ExpectSums({"qc10", 4, 10}, 16, 24, "24", "1.0");
    ExpectSums({"qc12", 2, 12}, 16, 24, "tight", "1.0");

    Synth({"qc10", 2, 10}, 8, 12, "tight");
    ASSERT_EQ(Bin({"qc10", 2, 10}, 8, 12, "frame.raw -o tight.raw"), 0);
    ASSERT_EQ(Bin({"qc10", 2, 10}, 8, 12, "frame.raw -o wide.raw --out-pitch 6"), 0);
    const std::string tight = Read("tight.raw");
    std::string wide;
    for (size_t y = 0; y < 6; ++y) wide += tight.substr(5 * y, 5) + '\0';
    EXPECT_EQ(Read("wide.raw"), wide);
}

// Garbage between the rows, and nothing after the last one, must not reach the result; nor must
// what an operation reads past a tight row.
TEST_F(FrameTest, PaddingDoesNotMatter) {
    for (const Way& way : kWays) {
        SCOPED_TRACE(way.layout + std::to_string(way.cell));
        const int width = 3 * way.Block(), height = 2 * way.Block();
        Synth(way, width, height, "tight");
        const std::string frame = Read("frame.raw");
        const size_t rowBytes = frame.size() / size_t(height);
        std::string padded;
        for (size_t at = 0; at < frame.size(); at += rowBytes) {
            padded += (at ? std::string(7, '\xFF') : "") + frame.substr(at, rowBytes);
        }
        Write("padded.raw", padded);
        ASSERT_EQ(Bin(way, width, height, "frame.raw -o binned.raw --gain 1.5"), 0) << said_;
        ASSERT_EQ(Bin(way, width, height,
                      "padded.raw -o other.raw --gain 1.5 --pitch " + std::to_string(rowBytes + 7)),
                  0)
            << said_;
        EXPECT_EQ(Read("binned.raw"), Read("other.raw"));
    }
}

// Rows that end inside a group, pitches that are not whole groups, gains on both sides of one.
TEST_F(FrameTest, GainAloneAppliesToEveryPixel) {
    for (const std::string layout : {"qc10", "qc12", "vx10", "vx12"}) {
        const int bits = std::stoi(layout.substr(2));
        for (const std::string gain : {"0.5", "1.0", "2.7"}) {
            ExpectSums({layout, 1, bits}, 10, 6, "19", gain);
        }
    }
}

TEST_F(FrameTest, WhatFillsNoCellIsLeftOut) {
    Synth({"qc10", 1, 10}, 10, 8, "tight");
    Write("cut.raw", Read("frame.raw").substr(0, 7 * 15));
    ASSERT_EQ(Bin({"qc10", 3, 10}, 10, 7, "cut.raw -o binned.pgm"), 0) << said_;
    EXPECT_NE(said_.find("the last 1 columns and 1 rows are left out"), std::string::npos) << said_;
    const Picture frame = ReadPgm("frame.pgm"), binned = ReadPgm("binned.pgm");
    ASSERT_EQ(binned.width, 3);
    ASSERT_EQ(binned.height, 2);
    for (int i = 0; i < 6; ++i) {
        int sum = 0;
        for (int k = 0; k < 9; ++k) sum += frame.At(i % 3 * 3 + k % 3, i / 3 * 3 + k / 3);
        EXPECT_EQ(binned.codes[size_t(i)], sum / 9);
    }
}

TEST_F(FrameTest, PipesCarryFrames) {
    Synth({"vx10", 2, 10}, 16, 8, "tight");
    ASSERT_EQ(Bin({"vx10", 2, 10}, 16, 8, "frame.raw -o file.pgm"), 0) << said_;
    ASSERT_EQ(Bin({"vx10", 2, 10}, 16, 8, "- -o - --to pgm <frame.raw | cat >piped.pgm"), 0);
    EXPECT_EQ(Read("file.pgm"), Read("piped.pgm"));
}

// The red half as bright as the rest: the gray world makes gray of it, and bright enough to see.
TEST_F(FrameTest, ADevelopedPictureIsBalancedAndBright) {
    std::string mosaic = "P5\n# a comment\n64 48\n1023\n";
    for (int i = 0; i < 64 * 48; ++i) {
        const bool red = i / 64 % 2 == 1 && i % 2 == 0;  // GBRG
        const int code = 64 + (i % 64 / 2 + 10) * (red ? 1 : 2);
        mosaic += {static_cast<char>(code >> 8), static_cast<char>(code)};
    }
    Write("mosaic.pgm", mosaic);
    ASSERT_EQ(Tarn("synth mosaic.pgm -o frame.raw -f vx10 --cell 1 --black 64"), 0) << said_;
    ASSERT_EQ(Tarn("bin frame.raw -o out.png -f vx10 --cell 1 -s 64x48 --cfa GBRG"), 0) << said_;

    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&png, "out.png"));
    png.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(png));
    ASSERT_TRUE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr));
    ASSERT_EQ(pixels.size(), 64u * 48 * 3);
    double mean[3] = {};
    for (size_t i = 0; i < pixels.size(); ++i) mean[i % 3] += pixels[i] / (64.0 * 48);
    ASSERT_EQ(Tarn("bin frame.raw -o half.png -f vx10 --cell 1 -s 64x48 --cfa GBRG --half"), 0);
    png_image half{};
    half.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&half, "half.png"));
    EXPECT_EQ(half.width, 32u);
    png_image_free(&half);
    EXPECT_NEAR(mean[0], mean[1], 4);
    EXPECT_NEAR(mean[2], mean[1], 4);
    EXPECT_GT(mean[1], 90);
    EXPECT_LT(mean[1], 220);
}

std::string LittleEndian(unsigned value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
    return text;
}

// The least camera raw that is one: an uncompressed 16-bit DNG, GBRG, white 1059, with
// a black level of its own for each colour position: 100, 96, 92, 88.
std::string SmallDng(int width, int height, const std::string& samples) {
    struct Tag {
        unsigned id, type, count, value;  // types: 1 byte, 2 text, 3 short, 4 long
    };
    const unsigned data = 512, blacks = 500;
    const Tag tags[] = {{254, 4, 1, 0},
                        {256, 4, 1, unsigned(width)},
                        {257, 4, 1, unsigned(height)},
                        {258, 3, 1, 16},
                        {259, 3, 1, 1},
                        {262, 3, 1, 32803},
                        {271, 2, 4, 0x00414141},
                        {272, 2, 4, 0x00424242},
                        {273, 4, 1, data},
                        {277, 3, 1, 1},
                        {278, 4, 1, unsigned(height)},
                        {279, 4, 1, unsigned(samples.size())},
                        {33421, 3, 2, 0x00020002},
                        {33422, 1, 4, 0x01000201},
                        {50706, 1, 4, 0x00000401},
                        {50713, 3, 2, 0x00020002},
                        {50714, 3, 4, blacks},
                        {50717, 4, 1, 1059}};
    std::string dng = "II" + LittleEndian(42, 2) + LittleEndian(8, 4);
    dng += LittleEndian(sizeof tags / sizeof tags[0], 2);
    for (const Tag& tag : tags) {
        dng += LittleEndian(tag.id, 2) + LittleEndian(tag.type, 2) + LittleEndian(tag.count, 4) +
               LittleEndian(tag.value, 4);
    }
    dng.resize(blacks);
    for (const unsigned black : {100, 96, 92, 88}) dng += LittleEndian(black, 2);
    dng.resize(data);
    return dng + samples;
}

TEST_F(FrameTest, CameraRawsComeWithTheirLevelsAndColours) {
    std::string samples;
    for (unsigned i = 0; i < 64 * 48; ++i) samples += LittleEndian(90 + i % 970, 2);
    Write("photo.dng", SmallDng(64, 48, samples));
    ASSERT_EQ(Tarn("synth photo.dng -o plain.pgm -f qc10 --cell 1"), 0) << said_;
    EXPECT_NE(said_.find("GBRG"), std::string::npos) << said_;
    EXPECT_NE(said_.find("black 100/96/92/88, white 1059"), std::string::npos) << said_;
    const Picture plain = ReadPgm("plain.pgm");
    ASSERT_EQ(plain.codes.size(), 64u * 48);
    for (int i = 0; i < 64 * 48; ++i) {
        const int aboveBlack = 90 + i % 970 - (100 - i / 64 % 2 * 8 - i % 2 * 4);
        EXPECT_EQ(plain.codes[size_t(i)], std::min(64 + aboveBlack, 1023));
    }
}

}  // namespace
