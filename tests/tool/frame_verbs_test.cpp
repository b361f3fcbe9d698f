// selftest, verify, inspect and bench from outside.
#include <cmath>
#include <nlohmann/json.hpp>

#include "engines/kernels/levels.h"
#include "tool_runner.h"

namespace {

using nlohmann::json;

class FrameVerbs : public ToolTest {
 protected:
    // What a verb prints as JSON.
    json Ask(const std::string& arguments) {
        EXPECT_EQ(Tarn(arguments + " --json >answer.json"), 0) << said_;
        return json::parse(Read("answer.json"), nullptr, false);
    }

    void FlipByte(const std::string& path, size_t at) {
        std::string bytes = Read(path);
        bytes.at(at) = static_cast<char>(bytes.at(at) ^ 4);
        Write(path, bytes);
    }

    template <class F>
    void WritePgm(const std::string& path, int width, int height, int bits, const F& code) {
        std::string bytes = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                            std::to_string((1 << bits) - 1) + "\n";
        for (int i = 0; i < width * height; ++i) {
            const int value = code(i % width, i / width);
            bytes += static_cast<char>(value >> 8);
            bytes += static_cast<char>(value);
        }
        Write(path, bytes);
    }

    // A Bayer mosaic of waves in three colours, with noise.
    void WriteScene(const std::string& path, int width, int height, int bits) {
        std::mt19937 random(1);
        WritePgm(path, width, height, bits, [&](int x, int y) {
            const double colour = x % 2 + y % 2 == 0 ? 0.3 : x % 2 + y % 2 == 1 ? 0.55 : 0.4;
            const double light = 1 + 0.4 * std::sin(x * 0.11 + y * 0.03) * std::cos(y * 0.07) +
                                 0.2 * std::sin(x * 0.31) * std::sin(y * 0.23);
            const double noise = double(random() % 1000) / 1000 - 0.5;
            return static_cast<int>((colour * light + 0.02 * noise) * ((1 << bits) - 1));
        });
    }
};

TEST_F(FrameVerbs, SelftestNamesTheFirstDifference) {
    EXPECT_EQ(Tarn("selftest"), 0) << said_;
    EXPECT_NE(said_.find("45 results"), std::string::npos) << said_;

    const struct {
        const char* file;
        size_t byte;
        const char* reason;
    } kCases[] = {
        {"ragged_vx12.raw", 100, "frame ragged_vx12"},
        {"codes_qc10.pgm", 500, "frame codes_qc10"},
        {"qc_nona10_scene_fused.raw", 20, "qc_nona10_scene_fused"},
        {"vx_ev12_ragged_g1.37.pgm", 300, "vx_ev12_ragged_g1.37"},
        {"qc_tetra12_ragged_g1.37.raw", 34, "byte 34 of row 0"},  // row padding
        {"manifest.json", 1, "manifest.json"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.file);
        std::filesystem::remove_all("golden");
        std::filesystem::copy(TARN_GOLDEN, "golden");
        FlipByte("golden/" + std::string(test.file), test.byte);
        EXPECT_NE(Tarn("selftest --golden golden"), 0);
        EXPECT_NE(said_.find(test.reason), std::string::npos) << said_;
    }
    std::filesystem::remove("golden/codes_vx10.raw");
    EXPECT_EQ(Tarn("selftest --golden golden"), 2);
}

TEST_F(FrameVerbs, VerifyAgreesAndFindsAPlantedDifference) {
    WriteMosaic("mosaic.pgm", 60, 48, 10);
    WriteMosaic("deep.pgm", 60, 48, 12);
    for (const std::string family : {"qc", "vx"}) {
        for (const std::string cell : {"1", "2", "3", "4"}) {
            ASSERT_EQ(Tarn("synth mosaic.pgm -o a.raw --cell 1 --pitch 83 -f " + family + "10"), 0);
            const std::string what = " -s 57x48 --pitch 83 --gain 1.7 --cell " + cell;
            EXPECT_EQ(Tarn("verify a.raw -f " + family + "10" + what), 0) << said_;
        }
    }
    ASSERT_EQ(Tarn("synth deep.pgm -o deep.raw --cell 1 -f vx12"), 0);
    EXPECT_EQ(Tarn("verify deep.raw -f vx12 -s 60x48 --cell 2 --out-bits 10"), 0) << said_;
    EXPECT_NE(said_.find("LibRaw agree: 2,880 pixels"), std::string::npos) << said_;

    ASSERT_EQ(Tarn("synth mosaic.pgm -o a.raw --cell 1 -f qc10"), 0);
    EXPECT_EQ(Shell(TARN_DIFFERING_PROGRAM " verify a.raw -f qc10 -s 60x48 --cell 2 --threads 1"),
              1);
    EXPECT_NE(said_.find("pixel (5, 3) is "), std::string::npos) << said_;
    EXPECT_NE(said_.find("; 1 of 720 pixels differ"), std::string::npos) << said_;
    Shell(TARN_DIFFERING_PROGRAM
          " verify a.raw -f qc10 -s 60x48 --cell 2 --threads 1 --json >answer.json");
    EXPECT_EQ(json::parse(Read("answer.json"))["agree"], false);
}

TEST_F(FrameVerbs, InspectCountsWhatIsThere) {
    // 2x2 cells, 16x8 pixels: 32 cells. White in two pixels of one cell, dark in one of another.
    WritePgm("codes.pgm", 16, 8, 10, [](int x, int y) {
        if (y == 0 && x < 2) return 1023;
        if (x == 5 && y == 5) return 10;
        return 100 + 100 * (x / 2 % 2) + (x % 2 == 1 && y % 2 == 1 ? 8 : 0);
    });
    ASSERT_EQ(Tarn("synth codes.pgm -o a.raw --cell 1 -f qc10 --black 64 --pitch 23"), 0);
    const json answer = Ask("inspect a.raw -f qc10 -s 16x8 --pitch 23 --cell 2 --gain 2");
    ASSERT_FALSE(answer.is_null()) << said_;
    EXPECT_FALSE(answer.contains("guess"));
    const json& first = answer["colours"][0];
    EXPECT_EQ(first["minimum"], 10);
    EXPECT_EQ(first["maximum"], 1023);
    EXPECT_EQ(first["p50"], 100);
    EXPECT_EQ(first["p99"], 1023);
    // 32 pixels of (0, 0): 8 cells of 100, 100, 100, 108, two of them white, one dark.
    EXPECT_DOUBLE_EQ(first["mean"], (8 * 408 + 2 * 923 - 98) / 32.0);
    EXPECT_EQ(answer["colours"][1]["minimum"], 200);
    EXPECT_DOUBLE_EQ(answer["clipped_pixels"], 2 / 128.0);
    EXPECT_DOUBLE_EQ(answer["clipped_cells"], 1 / 32.0);
    EXPECT_DOUBLE_EQ(answer["below_black"], 1 / 128.0);
    EXPECT_EQ(answer["row_padding"], "3 bytes a row, all 0");
    // The cell of 1023, 1023, 100, 108: 64 + 2 (563 - 64) is 1062, over 1023.
    EXPECT_DOUBLE_EQ(answer["gain"]["clipped"], 1 / 32.0);

    ASSERT_EQ(Tarn("inspect a.raw -f qc10 -s 16x8 --pitch 23 --cell 2 --svg a.svg --png a.png"), 0);
    // The second of two frames after a header.
    Write("two.raw", "header" + std::string(8 * 23, '\0') + Read("a.raw"));
    const std::string place =
        "inspect two.raw --offset 6 --frame 1 -f pRAA -s 16x8 --pitch 23 --cell 2 --gain 2";
    const json second = Ask(place);
    EXPECT_EQ(second["colours"], answer["colours"]);
    EXPECT_EQ(second["gain"], answer["gain"]);
    // The command that it proposes finds the same frame. A PNG of it would be too small.
    ASSERT_EQ(
        Tarn(place + " | sed -n 's/^to see it: *tarn //; s/png/pgm/p' | tr -d '\\n' >command"), 0);
    EXPECT_EQ(Tarn(Read("command")), 0) << said_;
    EXPECT_NE(Read("two.pgm"), "");
    EXPECT_EQ(Read("a.png").substr(1, 3), "PNG");
    EXPECT_NE(Read("a.svg").find("</svg>"), std::string::npos);
}

TEST_F(FrameVerbs, InspectGuessesWhatItIsNotTold) {
    const struct {
        const char *layout, *cell, *size, *pitch;
        int bits;
    } kCases[] = {{"qc10", "1", "320x240", "tight", 10}, {"qc10", "2", "320x240", "480", 10},
                  {"vx10", "3", "312x234", "397", 10},   {"vx10", "4", "240x320", "tight", 10},
                  {"qc12", "2", "320x240", "512", 12},   {"vx12", "1", "320x200", "483", 12}};
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.layout) + " cell " + test.cell);
        WriteScene("scene.pgm", 320, 240, test.bits);
        ASSERT_EQ(Tarn(std::string("synth scene.pgm -o a.raw -f ") + test.layout + " --cell " +
                       test.cell + " -s " + test.size + " --pitch " + test.pitch),
                  0);
        const json answer = Ask("inspect a.raw");
        const json& frame = answer["frame"];
        EXPECT_EQ(frame["layout"], test.layout);
        EXPECT_EQ(std::to_string(frame["cell"].get<int>()), test.cell);
        EXPECT_EQ(std::to_string(frame["width"].get<int>()) + "x" +
                      std::to_string(frame["height"].get<int>()),
                  test.size);
        EXPECT_NE(answer["guess"]["pitch"], "uncertain");
        EXPECT_EQ(answer["guess"]["runners_up"].size(), 3u);
    }
}

TEST_F(FrameVerbs, InspectIsNotSureOfAFileThatIsNotOneWholeFrame) {
    WriteScene("scene.pgm", 320, 240, 10);
    ASSERT_EQ(Tarn("synth scene.pgm -o a.raw -f qc10 --cell 2 --pitch 480"), 0);
    const std::string whole = Read("a.raw");
    EXPECT_EQ(Ask("inspect a.raw -f qc10")["guess"]["whole"], "certain");
    EXPECT_EQ(Ask("bin a.raw -f qc10 -o binned.raw")["geometry_guessed"], true);
    const struct {
        std::string bytes;
        int height, leftOver;
    } kCases[] = {{whole + "tail", 240, 4},
                  {whole.substr(480), 239, 0},
                  {std::string(960, '\0') + whole, 242, 0},
                  {whole.substr(0, 480 * 239 + 100), 239, 100}};
    for (const auto& test : kCases) {
        Write("cut.raw", test.bytes);
        const json answer = Ask("inspect cut.raw -f qc10");
        EXPECT_EQ(answer["frame"]["height"], test.height);
        EXPECT_EQ(answer["guess"]["bytes_left_over"], test.leftOver);
        EXPECT_EQ(answer["guess"]["pitch"], "likely");
        ASSERT_EQ(Tarn("inspect cut.raw -f qc10 | sed -n 's/^to see it: *tarn //p' | tr -d '\\n' "
                       ">command"),
                  0);
        EXPECT_EQ(Tarn(Read("command")), 0) << said_;
    }
    // A dump's name says its height, so that it may be taller than wide.
    const std::string dump = "Tarn_srcTetraInput_20240131235959123_480x480.raw";
    Write(dump, whole + whole);
    EXPECT_EQ(Tarn("bin " + dump + " -f qc10 -o binned.raw"), 0) << said_;
    // Two frames in one file look like a tall one.
    Write("two.raw", Read("a.raw") + Read("a.raw"));
    EXPECT_EQ(Tarn("bin two.raw -o binned.raw"), 2);
    EXPECT_NE(said_.find("is taller than wide: give -s, and --frame"), std::string::npos) << said_;
    EXPECT_EQ(Tarn("inspect two.raw -f qc10 -s 320x240 --pitch 480"), 2);
    EXPECT_NE(said_.find("two.raw holds 230,400 bytes; 320x240"), std::string::npos) << said_;
}

TEST_F(FrameVerbs, InspectIsNotSureOfWhatCannotBeKnown) {
    std::mt19937 random(1);
    std::string noise(200000, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    Write("noise.raw", noise);
    EXPECT_EQ(Ask("inspect noise.raw")["guess"]["whole"], "uncertain");

    // A grey wall: nothing tells the pitch, but the name of a dump does.
    WritePgm("wall.pgm", 320, 240, 10, [&](int, int) { return 300 + int(random() % 20); });
    const std::string name = "Tarn_srcTetraInput_20240131235959123_400x240.raw";
    ASSERT_EQ(Tarn("synth wall.pgm --cell 1 -f vx10 -o " + name), 0);
    EXPECT_EQ(Ask("inspect " + name)["frame"]["pitch"], 400);
    EXPECT_NE(Ask("inspect " + name)["guess"]["cell"], "certain");
    std::filesystem::rename(name, "wall.raw");
    EXPECT_NE(Ask("inspect wall.raw")["guess"]["pitch"], "certain");
    EXPECT_EQ(Ask("inspect wall.raw -f vx10 -s 320x240 --cell 1")["frame"]["pitch"], 400);
}

TEST_F(FrameVerbs, BenchReportsFiguresThatFitEachOther) {
    const json answer = Ask("bench -f vx10 -s 640x480 --pitch 803 --cell 4 --rounds 3");
    const double milliseconds = answer["milliseconds"];
    EXPECT_GT(milliseconds, 0);
    EXPECT_NEAR(answer["megapixels_per_second"].get<double>() * milliseconds, 307.2, 0.01);
    EXPECT_NEAR(answer["input_gigabytes_per_second"].get<double>() * milliseconds, 803 * 480 / 1e6,
                1e-6);
    EXPECT_GT(answer["ratio_to_memcpy"], 0);
    EXPECT_EQ(answer["level"].get<std::string>(), tarn::BestKernels().name);
}

using FrameVerbsErrors = RefusalTest;

TEST_F(FrameVerbsErrors, WrongRequestsAreRefusedInOneLine) {
    Write("words.raw", [] {
        std::string text;
        for (int i = 0; i < 40000; ++i) {
            text += static_cast<char>(i * 7);
            text += static_cast<char>(i / 100 % 4);
        }
        return text;
    }());
    const struct {
        std::string arguments, reason;
    } kCases[] = {
        {"selftest --golden nowhere", "nowhere/manifest.json: cannot be read"},
        {"verify frame.raw -f qc10 -s 16x9 --cell 2", "holds 160 bytes"},
        {"verify frame.raw -f qc12 -s 16x6 --cell 3", "12-bit frames can be binned 2x2 only"},
        {"verify frame.raw -f qc10 -s 16x8 --cell 2 --out-bits 11", "--out-bits"},
        {"verify frame.raw -f SRGGB10 -s 16x8 --cell 2", "25 pixels in 32 bytes"},
        {"verify frame.raw -f qc10 -s 16x4 --cell 2 --frame all", "one frame is looked at"},
        {"verify frame.raw -f qc10 -s 16x8 --cell 3 --out-bits 12", "no operation makes 12 bits"},
        {"inspect frame.raw --frame 1", "where frames begin is known with"},
        {"inspect frame.raw --offset 200", "after --offset 200 holds 0 bytes: no frame of what"},
        {"inspect frame.raw --pitch tight", "needs -f and -s"},
        {"inspect frame.raw -f qc10 -s 16x8 --cell 2 --svg -", "is taken by the report"},
        {"inspect frame.raw -f qc10 -s 16x8 --cell 2 --svg /dev/fd/1", "is taken by the report"},
        {"inspect frame.raw --svg new.png --png ./new.png", "name the same file"},
        {"inspect frame.raw --cfa RGBW", "none of RGGB"},
        {"inspect frame.raw -f SRGGB10P --cfa BGGR", "BGGR contradicts SRGGB10P"},
        {"inspect frame.raw --family qc", "-f, or --family and --bits"},
        {"bench -f qc10 -s 16x8 --cell 2 --pitch auto", "are of a file, and none is given"},
        {"inspect absent.raw", "absent.raw: cannot be read"},
        {"inspect frame.raw", "too small or too uniform"},
        {"inspect words.raw", "looks like samples in 16-bit words"},
        {"inspect frame.raw -f qc10 -s 17x8 --pitch 20 --cell 2", "17 pixels takes 25"},
        {"inspect frame.raw -s 1000x1000", "no frame of what is given"},
        {"inspect frame.raw -f qc10 -s 16x8 --cell 2 --png frame.raw", "is the input itself"},
        {"inspect frame.raw --pitch 200", "no frame of what is given"},
        {"inspect frame.raw --pitch 2", "no frame of what is given"},
        {"bench -f qc10 -s 1000000000x1000000000 --cell 2", "at most 4,294,967,296"},
        {"bench -f qc10 -s 2x2 --cell 3", "the frame: 2x2 to 0x0 is an empty frame"},
        {"bench -f qc10 -s 16x8 --cell 2 --rounds 0", "--rounds"},
        {"bench absent.raw -f qc10 -s 16x8 --cell 2", "absent.raw: cannot be read"},
    };
    for (const auto& test : kCases) ExpectRefused(test.arguments, 2, test.reason);
}

}  // namespace
