// What convert writes and reads: every code arrives, wherever it goes.
#include <libraw/libraw.h>
#include <png.h>

#include <memory>

#include "reference/packing.h"
#include "tests/tool/oracle/binned_oracle.h"
#include "tool_runner.h"

namespace {

using tarn_reference::Packing;

struct PackedKind {
    std::string name;
    Packing packing;
    int bits;
};
const PackedKind kKinds[] = {{"qc10", Packing::QCRaw10, 10},
                             {"qc12", Packing::QCRaw12, 12},
                             {"vx10", Packing::VXRaw10, 10},
                             {"vx12", Packing::VXRaw12, 12}};

std::vector<int> RandomCodes(int bits, int count) {
    std::mt19937 random(static_cast<unsigned>(bits + count));
    std::vector<int> codes;
    for (int i = 0; i < count; ++i) codes.push_back(static_cast<int>(random()) & ((1 << bits) - 1));
    return codes;
}

std::vector<int> Shifted(std::vector<int> codes, int from, int to) {
    for (int& code : codes) code = to > from ? code << (to - from) : code >> (from - to);
    return codes;
}

class ConvertTest : public ToolTest {
 protected:
    static constexpr int kWidth = 61, kHeight = 34;  // rows end inside a group

    static size_t RowBytes(const PackedKind& kind) {
        return size_t(kind.bits == 10 ? (kWidth + 3) / 4 * 5 : (kWidth + 1) / 2 * 3);
    }
    static std::string Packed(const PackedKind& kind, const std::vector<int>& codes, size_t pitch) {
        std::string bytes(pitch * kHeight, '\0');
        for (size_t i = 0; i < codes.size(); ++i) {
            WritePixel(kind.packing, reinterpret_cast<uint8_t*>(&bytes[i / kWidth * pitch]),
                       i % kWidth, unsigned(codes[i]));
        }
        return bytes;
    }
    static std::vector<int> Codes(const PackedKind& kind, const std::string& bytes, size_t pitch) {
        std::vector<int> codes;
        for (size_t i = 0; i < size_t{kWidth} * kHeight && (i / kWidth + 1) * pitch <= bytes.size();
             ++i) {
            const char* row = &bytes[i / kWidth * pitch];
            codes.push_back(
                int(ReadPixel(kind.packing, reinterpret_cast<const uint8_t*>(row), i % kWidth)));
        }
        return codes;
    }
    static std::string Geometry(const PackedKind& kind) {
        return " -s 61x34 -f " + kind.name + " ";
    }
    // frame.raw, rows 7 bytes apart, of random codes.
    static std::vector<int> WriteFrame(const PackedKind& kind) {
        const std::vector<int> codes = RandomCodes(kind.bits, kWidth * kHeight);
        Write("frame.raw", Packed(kind, codes, RowBytes(kind) + 7));
        return codes;
    }
    void Convert(const std::string& arguments) {
        ASSERT_EQ(Tarn("convert " + arguments), 0) << said_;
    }
};

TEST_F(ConvertTest, EveryLayoutBecomesEveryOther) {
    for (const PackedKind& from : kKinds) {
        const std::vector<int> codes = WriteFrame(from);
        for (const PackedKind& to : kKinds) {
            SCOPED_TRACE(from.name + " to " + to.name);
            const std::vector<int> expected = Shifted(codes, from.bits, to.bits);
            const size_t pitch = RowBytes(to) + 3;
            Convert("frame.raw -o out.raw --pitch auto --to " + to.name + Geometry(from) +
                    "--out-pitch " + std::to_string(pitch));
            EXPECT_EQ(Read("out.raw"), Packed(to, expected, pitch));
            if (from.bits != to.bits) {
                EXPECT_NE(said_.find(from.bits < to.bits ? "times 4" : "shifted right by 2"),
                          std::string::npos)
                    << said_;
            }
        }
    }
}

TEST_F(ConvertTest, PgmAndDngAndGreyPngKeepEveryCode) {
    for (const PackedKind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        const std::vector<int> codes = WriteFrame(kind);
        const std::string tight = Packed(kind, codes, RowBytes(kind));
        const std::string geometry = "frame.raw --pitch auto" + Geometry(kind);
        Convert(geometry + "-o frame.pgm");
        EXPECT_EQ(ReadPgm("frame.pgm").codes, codes);
        EXPECT_EQ(ReadPgm("frame.pgm").maximum, (1 << kind.bits) - 1);
        Convert("frame.pgm -o again.raw --to " + kind.name);
        EXPECT_EQ(Read("again.raw"), tight);
        Convert(geometry + "-o - --to dng | cat >frame.dng");
        Convert("- -o again.raw --to " + kind.name + " <frame.dng");
        EXPECT_EQ(Read("again.raw"), tight);

        Convert(geometry + "-o frame.png --grey");
        png_image png{};
        png.version = PNG_IMAGE_VERSION;
        ASSERT_TRUE(png_image_begin_read_from_file(&png, "frame.png"));
        EXPECT_EQ(png.format, png_uint_32{PNG_FORMAT_LINEAR_Y});
        std::vector<uint16_t> pixels(size_t{kWidth} * kHeight);
        ASSERT_EQ(PNG_IMAGE_SIZE(png), pixels.size() * 2);
        ASSERT_TRUE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr));
        EXPECT_EQ(std::vector<int>(pixels.begin(), pixels.end()), Shifted(codes, kind.bits, 16));
    }
}

// Not by our own reading: what a raw developer makes of the DNG.
TEST_F(ConvertTest, ADngTellsADeveloperEverything) {
    const struct {
        std::string name, colours;
        PackedKind kind;
    } kNamed[] = {{"pRAA", "RGGB", kKinds[0]},
                  {"pgAA", "GRBG", kKinds[0]},
                  {"V4L2_PIX_FMT_SGBRG12P", "GBRG", kKinds[1]},
                  {"SBGGR12_CSI2P", "BGGR", kKinds[1]},
                  {"BayerGR10p", "GRBG", kKinds[2]},
                  {"BayerBG12p", "BGGR", kKinds[3]}};
    for (const auto& named : kNamed) {
        SCOPED_TRACE(named.name);
        const std::vector<int> codes = WriteFrame(named.kind);
        Convert(
            "frame.raw -o frame.dng --pitch auto -s 61x34 --black 70 --white 1000 --wb 2,1,1.6 "
            "-f " +
            named.name);
        const auto raw = std::make_unique<LibRaw>();
        ASSERT_EQ(raw->open_file("frame.dng"), LIBRAW_SUCCESS);
        ASSERT_EQ(raw->unpack(), LIBRAW_SUCCESS);
        ASSERT_EQ(raw->imgdata.sizes.width, kWidth);
        ASSERT_EQ(raw->imgdata.sizes.height, kHeight);
        std::string colours;
        for (int i = 0; i < 4; ++i) {
            colours += raw->imgdata.idata.cdesc[raw->COLOR(i / 2, i % 2)];
        }
        EXPECT_EQ(colours, named.colours);
        const libraw_colordata_t& colour = raw->imgdata.color;
        EXPECT_EQ(colour.black + colour.cblack[6] * (colour.cblack[4] > 0), 70u);
        EXPECT_EQ(colour.maximum, 1000u);
        EXPECT_NEAR(colour.cam_mul[0] / colour.cam_mul[1], 2.0, 0.01);
        EXPECT_NEAR(colour.cam_mul[2] / colour.cam_mul[1], 1.6, 0.01);
        // A DNG made of the DNG tells the same.
        Convert("frame.dng -o again.dng");
        const auto again = std::make_unique<LibRaw>();
        ASSERT_EQ(again->open_file("again.dng"), LIBRAW_SUCCESS);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(again->imgdata.color.cam_mul[i], colour.cam_mul[i], 0.001);
        }
        const ushort* pixels = raw->imgdata.rawdata.raw_image;
        for (int i = 0; i < kWidth * kHeight; ++i) {
            const size_t at = size_t(i / kWidth) * (raw->imgdata.sizes.raw_pitch / 2u);
            ASSERT_EQ(pixels[at + size_t(i % kWidth)], codes[size_t(i)]);
        }
    }
}

// Three frames after a header, the last row's padding missing.
TEST_F(ConvertTest, FramesAreTakenOutOfALongFile) {
    const PackedKind& kind = kKinds[2];
    const size_t rowBytes = RowBytes(kind), pitch = rowBytes + 9;
    std::string frames[3], file = "header";
    for (int i = 0; i < 3; ++i) {
        const std::vector<int> codes = RandomCodes(kind.bits, kWidth * kHeight);
        std::vector<int> turned(codes);
        std::rotate(turned.begin(), turned.begin() + i, turned.end());
        frames[i] = Packed(kind, turned, rowBytes);
        file += Packed(kind, turned, pitch);
    }
    file.resize(file.size() - 9);
    Write("long.raw", file);
    const std::string arguments = "long.raw --offset 6" + Geometry(kind);
    Convert(arguments + "-o all.raw --pitch auto --frame all");
    EXPECT_EQ(Read("all.raw"), frames[0] + frames[1] + frames[2]);
    const std::string padded = "--pitch " + std::to_string(pitch);
    Convert(arguments + "-o one.raw --frame 1 " + padded);
    EXPECT_EQ(Read("one.raw"), frames[1]);
    Convert("- <" + arguments + "-o one.raw --frame 1 " + padded);
    EXPECT_EQ(Read("one.raw"), frames[1]);
    Convert(arguments + "-o f%02d.pgm --frame 1-2 " + padded);
    for (int i = 1; i < 3; ++i) {
        std::vector<int> codes = ReadPgm("f0" + std::to_string(i) + ".pgm").codes;
        EXPECT_EQ(codes, Codes(kind, frames[i], rowBytes));
    }
    EXPECT_EQ(Read("f00.pgm"), "");
}

TEST_F(ConvertTest, BinTakesTheSameFramesAndMakesTheSameFiles) {
    const PackedKind& kind = kKinds[0];
    const std::vector<int> codes = WriteFrame(kind);
    const std::vector<int> others(codes.rbegin(), codes.rend());
    const size_t pitch = RowBytes(kind) + 7;
    Write("two.raw", "header" + Packed(kind, codes, pitch) + Packed(kind, others, pitch));
    Write("other.raw", Packed(kind, others, RowBytes(kind)));
    const std::string bin = " --cell 2 --gain 1.5 -s 61x34 -f pBAA ";
    ASSERT_EQ(Tarn("bin frame.raw -o 0.raw --pitch auto" + bin), 0) << said_;
    ASSERT_EQ(Tarn("bin other.raw -o 1.raw" + bin), 0) << said_;
    ASSERT_EQ(Tarn("bin two.raw -o both.raw --offset 6 --pitch auto --frame all" + bin), 0)
        << said_;
    EXPECT_EQ(Read("both.raw"), Read("0.raw") + Read("1.raw"));
    const std::string gain = " --cell 1 --gain 1.5 -s 61x34 -f pBAA --pitch auto --offset 6 ";
    ASSERT_EQ(Tarn("bin two.raw -o %d.dng --frame all" + gain), 0) << said_;
    ASSERT_EQ(Tarn("bin two.raw -o %d.pgm --frame all" + gain), 0) << said_;
    for (const std::string name : {"0", "1"}) {
        Convert(name + ".dng -o again.pgm");
        EXPECT_EQ(Read("again.pgm"), Read(name + ".pgm"));
        EXPECT_EQ(ReadPgm("again.pgm").width, kWidth);
    }
}

TEST_F(ConvertTest, EveryListedNameIsTaken) {
    ASSERT_EQ(Shell("tarn formats --json >names.json"), 0);
    std::istringstream json(Read("names.json"));
    std::string line, layout;
    int names = 0;
    while (std::getline(json, line) && line.find("refused") == std::string::npos) {
        const auto value = [&] {
            return line.substr(line.find(": ") + 3, line.rfind('"') - line.find(": ") - 3);
        };
        if (line.find("\"layout\"") != std::string::npos) layout = value();
        if (line.find("\"name\"") == std::string::npos) continue;
        SCOPED_TRACE(line);
        const int bits = std::stoi(layout.substr(2));
        Write("in.raw", std::string(bits == 10 ? 15 : 18, '\x5A'));
        Convert("in.raw -o a.raw --to vx12 -s 4x3 -f " + value());
        Convert("in.raw -o b.raw --to vx12 -s 4x3 -f " + layout);
        EXPECT_EQ(Read("a.raw"), Read("b.raw"));
        ++names;
    }
    EXPECT_EQ(names, 44);
}

TEST_F(ConvertTest, WhiteBalanceAndLevelsReachADevelopedPicture) {
    std::vector<int> codes;
    for (int i = 0; i < kWidth * kHeight; ++i) {
        const bool red = i / kWidth % 2 == 0 && i % kWidth % 2 == 0;
        codes.push_back(100 + (red ? 100 : 200));
    }
    Write("frame.raw", Packed(kKinds[0], codes, RowBytes(kKinds[0])));
    Convert("frame.raw -o frame.png -f pRAA -s 61x34 --black 100 --white 900 --wb 2,1,1");
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&png, "frame.png"));
    png.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(png));
    ASSERT_TRUE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr));
    const size_t middle = pixels.size() / 6 * 3 + 90;
    EXPECT_NEAR(pixels[middle], pixels[middle + 1], 2);
    EXPECT_NEAR(pixels[middle + 2], pixels[middle + 1], 2);
}

}  // namespace
