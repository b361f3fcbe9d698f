// What the shared options, the names of layouts and convert refuse.
#include "tool_runner.h"

namespace {

using ConvertErrorsTest = RefusalTest;

TEST_F(ConvertErrorsTest, WrongRequestsAreRefusedInOneLine) {
    const std::string packed = "convert frame.raw -o kept.raw ";  // 16x8, 10 bits, 160 bytes
    const std::string picture = "convert mosaic.pgm -o kept.raw ";
    const std::string dng = "convert frame.raw -o new.dng -s 16x8 ";
    const struct {
        std::string arguments, reason;
    } kCases[] = {
        {packed, "a packed frame needs -f and -s"},
        {packed + "-f qc10", "-s: the width and height"},
        {packed + "-s 16x8", "-f, or --family and --bits"},
        {packed + "-s 16x8 --family qc", "--bits"},
        {packed + "-s 16x8 --family mipi --bits 10", "neither qc nor vx"},
        {packed + "-s 16x8 --family vx --bits 11", "neither 10 nor 12"},
        {packed + "-s 16x8 -f qc10 --bits 12", "must not say it again"},
        {packed + "-s 0x8 -f qc10", "\"0\" is not a whole number"},
        {packed + "-s 16x1000000001 -f qc10", "to 1,000,000,000"},
        {packed + "-s 16x9 -f qc10", "needs 180"},
        {packed + "-s 1000000000x1000000000 -f qc10", "needs 1,250,000,000,000,000,000"},
        {packed + "-s 16x8 -f qc10 --pitch 19", "16 pixels takes 20"},
        {packed + "-s 16x8 -f qc10 --pitch wide", "\"wide\" is not a whole number"},
        {packed + "-s 12x7 -f qc10 --pitch auto", "160 bytes, no whole number of 12x7 qc10 frames"},
        {packed + "-s 4x1 -f qc10 --pitch auto", "any pitch of 5, 8; give one"},
        {packed + "-s 16x8 -f qc10 --out-pitch 2147483000", "at most 4,294,967,296"},
        {packed + "-s 16x4 -f qc10", "holds 2 frames of 16x4 qc10 at pitch 20; choose with"},
        {packed + "-s 16x4 -f qc10 --frame 2", "no frame 2; frame.raw holds 2"},
        {packed + "-s 16x4 -f qc10 --frame 1-0", "backwards"},
        {packed + "-s 16x4 -f qc10 --frame -1", "--frame"},
        {packed + "-s 16x9 -f qc10 --frame all", "needs 180"},
        {packed + "-s 16x8 -f qc10 --offset 1", "after --offset 1 holds 159"},
        {packed + "-s 16x8 -f qc10 --offset 99999999999999999999", "--offset"},
        {packed + "-s 16x8 -f qc10 --cell 5", "from 1 to 4"},
        {packed + "-s 16x8 -f SRGGB10P --cfa BGGR", "contradicts SRGGB10P"},
        {packed + "-s 16x8 -f SRGGB10P --to SBGGR10P", "SBGGR10P is BGGR, the frame is RGGB"},
        {packed + "-s 16x8 -f qc10 --grey", "goes with .png only"},
        {packed + "-s 16x8 -f qc10 --wb 1,1,1", "go with .dng and"},
        {packed + "-s 16x8 -f qc10 --to pgm --out-pitch 40", "only packed output has a pitch"},
        {"convert frame.raw -o - --json -s 16x8 -f qc10", "taken by -o -"},
        {"convert frame.raw -o /dev/stdout --json -s 16x8 -f qc10", "taken by -o -"},
        {"convert frame.raw -o new.pgm -s 16x4 -f qc10 --frame all", "need a %d in the name"},
        {"convert frame.raw -o ./frame.raw -s 16x8 -f qc10", "is the input itself"},
        {"convert frame.raw -o nowhere/%d.pgm -s 16x4 -f qc10 --frame all", "cannot be written"},
        {"convert - -o new.raw -f qc10 -s 16x8 </dev/zero", "holds more than the 160 bytes"},
        {"convert - -o new.raw -f qc10 -s 16x8 --frame 2 <frame.raw", "no frame 2"},
        {dng + "-f qc10 --cell 2", "Bin the frame first"},
        {dng + "-f Y10P", "a sensor without colours"},
        {dng + "-f qc10 --black 1023", "must be above the black level"},
        {dng + "-f qc10 --white 1024", "within 10 bits"},
        {dng + "-f qc10", "sides from 22 to 65,535"},
        {dng + "-f qc10 --wb 1,1", "is not RED,GREEN,BLUE"},
        {dng + "-f qc10 --wb 1,nan,1", "from 0.01 to 100"},
        {"convert frame.raw -o new.png -s 16x8 -f qc10", "cannot become a PNG"},
        {picture, "needs a layout to be packed in"},
        {picture + "--to qc10 --offset 4", "takes --cfa and --cell only"},
        {picture + "--to gif", "other names for them, and raw, pgm, png, dng; see"},
    };
    for (const auto& c : kCases) ExpectRefused(c.arguments, 2, c.reason);
}

TEST_F(ConvertErrorsTest, NearMissesAreRefusedWithTheReason) {
    const struct {
        std::string name, reason;
    } kNames[] = {{"SRGGB10", "25 pixels in 32 bytes"},
                  {"ip3r", "25 pixels into 32 bytes"},
                  {"V4L2_PIX_FMT_Y10BPACK", "most significant bits first"},
                  {"Mono12Packed", "middle one of three bytes"},
                  {"BayerRG12Packed", "middle one of three bytes"},
                  {"loose", "6 pixels in 8 bytes"},
                  {"SGBRG12", "16 bits to a pixel"},
                  {"RAW14", "10 and 12 bits"},
                  {"PGAA", "did you mean pgAA or pGAA"},
                  {"QC10", "did you mean qc10"},
                  {"SRGGB10P_CSI2P", "unknown layout"}};
    for (const auto& n : kNames) {
        ExpectRefused("convert frame.raw -o kept.raw -s 16x8 -f " + n.name, 2, n.reason);
    }
}

// What claims to be a picture and is something else.
TEST_F(ConvertErrorsTest, BrokenPicturesAreRefused) {
    Write("big.raw", std::string(size_t{64} * 48 * 5 / 4, '\x40'));
    ASSERT_EQ(Tarn("convert big.raw -o good.dng -f pRAA -s 64x48"), 0) << said_;
    const std::string good = Read("good.dng");
    const auto refuse = [&](const std::string& bytes, const std::string& reason) {
        Write("bad.dng", bytes);
        ExpectRefused("convert bad.dng -o kept.raw --to qc10", 2, reason);
    };
    refuse(good.substr(0, good.size() / 2), "bad.dng: is neither a PGM");
    refuse(good.substr(0, 8), "bad.dng: is neither a PGM");
    refuse("", "bad.dng: is neither a PGM");
    const auto patched = [&](const std::string& tag, const std::string& value) {
        std::string bytes = good;
        return bytes.replace(bytes.find(tag) + 8, value.size(), value);
    };
    const std::string width("\x00\x01\x03\x00\x01\x00\x00\x00", 8);
    const std::string height("\x01\x01\x03\x00\x01\x00\x00\x00", 8);
    refuse(patched(width, "\xFF\xFF"), "bad.dng: ");
    refuse(patched(height, "\xFF\xFF"), "bad.dng: ");
    refuse(patched(width, std::string(2, '\0')), "bad.dng: ");
    Write("bad.pgm", "P5 99999999 99999999 1023 ");
    ExpectRefused("convert bad.pgm -o kept.raw --to qc10", 2, "needs 19,999,999,600,000,002");
    EXPECT_EQ(said_.find("a packed frame needs"), std::string::npos) << "it is a PGM: " << said_;
    Write("bad.pgm", "P5 4 1 255 1234");
    ExpectRefused("convert bad.pgm -o kept.raw --to qc10", 2, "has a maximum of 255");
    ExpectRefused("convert good.dng -o good.dng", 2, "is the input itself");
}

}  // namespace
