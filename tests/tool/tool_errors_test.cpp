// What the tool refuses, what it says, and what it leaves behind: nothing.
#include "tool_runner.h"

namespace {

using ErrorsTest = RefusalTest;

TEST_F(ErrorsTest, WrongRequestsAreRefusedInOneLine) {
    const std::string bin = "bin frame.raw -o kept.raw ";
    const std::string synth = "synth mosaic.pgm -o kept.raw ";
    for (const char* link : {"link0", "link1"}) std::filesystem::create_symlink("kept.raw", link);
    const struct {
        std::string arguments, reason;
    } kCases[] = {
        {"", "no verb is given; there are inspect, bin"},
        {"fold", "there is no verb \"fold\"; there are inspect, bin"},
        {"--json inspect frame.raw", "a verb comes first, not \"--json\"; there are inspect, bin"},
        {bin + "-f qc10 -s 16x8", "too small or too uniform to tell its geometry"},
        {"bin - -o kept.raw -f qc10 -s 16x8 <frame.raw", "only a file of one frame can be guessed"},
        {bin + "-f qc10 -s 16x8 --cell 2 --pich 20", "--pich"},
        {bin + "-f qc11 -s 16x8 --cell 2", "unknown layout \"qc11\"; there are qc10, qc12"},
        {bin + "-f qc10 -s 16 --cell 2", "not WIDTHxHEIGHT"},
        {bin + "-f qc10 -s 16x0 --cell 2", "\"0\" is not a whole number from 1"},
        {bin + "-f qc10 -s 16x-8 --cell 2", "\"-8\" is not a whole number from 1"},
        {bin + "-f qc10 -s 16x9 --cell 2",
         "frame.raw holds 160 bytes; 16x9 qc10 at pitch 20 needs 180"},
        {bin + "-f qc10 -s 14x8 --cell 2 --pitch 24", "or 188 without the last row's padding"},
        {bin + "-f qc10 -s 12x8 --cell 2", "--pitch 20 would fit"},
        {bin + "-f qc10 -s 1000000000x1000000000 --cell 2", "needs 1,250,000,000,000,000,000"},
        {bin + "-f qc10 -s 2000000000x2000000000 --cell 2", "to 1,000,000,000"},
        {bin + "-f qc10 -s 16x8 --cell 2 --pitch 19", "16 pixels takes 20"},
        {bin + "-f qc10 -s 16x8 --cell 2 --pitch 99999999999", "to 2,147,483,631"},
        {bin + "-f qc10 -s 16x8 --cell 2 --out-pitch 9", "8 pixels takes 10"},
        {bin + "-f qc10 -s 16x8 --cell 2 --out-pitch 2000000000", "at most 4,294,967,296"},
        {bin + "-f qc10 -s 16x8 --cell 5", "from 1 to 4"},
        {bin + "-f qc10 -s 16x8 --cell 2 --gain nan", "not a number from 0"},
        {bin + "-f qc10 -s 16x8 --cell 2 --out-bits 12", "only VX frames"},
        {bin + "-f qc12 -s 16x8 --cell 3", "12-bit frames can be binned 2x2 only"},
        {bin + "-f vx12 -s 16x8 --cell 4", "12-bit frames can be binned 2x2 only"},
        {bin + "-f qc10 -s 2x64 --cell 3",
         "2x64 to 0x21 is an empty frame; widths and heights start at 1"},
        {bin + "-f qc10 -s 16x8 --cell 2 --to gif", "none of raw, pgm, png"},
        {"bin frame.raw -o new.JPG -f qc10 -s 16x8 --cell 2", "no .jpg is written; pictures are"},
        {bin + "-f qc10 -s 16x8 --cell 2 --to png", "cannot become a PNG"},
        {bin + "-f qc10 -s 16x8 --cell 2 --cfa RGBW", "none of RGGB"},
        {bin + "-f qc10 -s 16x8 --cell 2 --threads 0", "\"0\" is not a whole number from 1"},
        {"bin frame.raw frame.raw -o %s.pgm -f qc10 -s 16x8 --cell 2", "go to one file, such as"},
        {"bin frame.raw frame.raw -o link%d -f qc10 -s 16x8 --cell 2",
         "to one file, such as link1"},
        {"bin frame.raw mosaic.pgm -o new.pgm -f qc10 -s 16x8 --cell 2", "mosaic.pgm holds"},
        {"bin - - -o new.raw -f qc10 -s 16x8 --cell 2", "can be read once only"},
        {"bin - -o new.pgm -f qc10 -s 16x8 --cell 2 --frame all <frame.raw", "need a %d in the"},
        {"bin - -o %s.pgm -f qc10 -s 16x8 --cell 2 --frame all <frame.raw", "need a %d in the"},
        {"bin - -o new.raw -f qc10 -s 16x8 --cell 2 --frame 1-2 <frame.raw",
         "no frame 1; standard"},
        {"bin - -o new.raw -f qc10 -s 16x9 --cell 2 --frame all <frame.raw",
         "--frame: there is no"},
        {"bin - -o new.raw -f qc10 -s 16x9 --cell 2 <frame.raw", "needs 180"},
        {"bin absent.raw -o kept.raw -f qc10 -s 16x8 --cell 2", "absent.raw: cannot be read"},
        {"bin . -o kept.raw -f qc10 -s 16x8 --cell 2", "is a folder"},
        {"bin - -o kept.raw -f qc10 -s 16x8 --cell 2 </dev/zero", "holds more than the 160 bytes"},
        {"bin frame.raw -o frame.raw -f qc10 -s 16x8 --cell 2", "is the input itself"},
        {"bin - -o frame.raw -f qc10 -s 16x8 --cell 2 <frame.raw", "is the input itself"},
        {"bin frame.raw -o . -f qc10 -s 16x8 --cell 2", "is a folder"},
        {"bin frame.raw -o nowhere/x.raw -f qc10 -s 16x8 --cell 2", "cannot be written"},
        {"bin frame.raw -o '' -f qc10 -s 16x8 --cell 2", "(an empty name): cannot be written"},
        {synth + "-f qc12 --cell 3", "a Nona frame has 10 bits"},
        {synth + "-f qc10 --cell 2 -s 18x8", "16 or 20 would be"},
        {synth + "-f qc10 --cell 2 --to png", "not PNG"},
        {synth + "-f qc10 --cell 2 --to pgm --pitch 20", "only packed output has a pitch"},
        {synth + "-f qc10 --cell 2 --black 2000", "must be above the black level"},
        {synth + "-f qc10 --cell 2 --exposure 0", "--exposure"},
        {synth + "-f qc10 --cell 2 -s 1000000000x1000000000", "at most 4,294,967,296"},
        {"synth frame.raw -o kept.raw -f qc10 --cell 2", "neither a PGM (P5) nor a camera raw"},
        {"synth mosaic.pgm -o mosaic.pgm -f qc10 --cell 2", "is the input itself"},
    };
    for (const auto& c : kCases) ExpectRefused(c.arguments, 2, c.reason);
    Write("frame_1.raw", Read("frame.raw") + Read("frame.raw"));
    ExpectRefused("bin - -o frame_%d.raw -f qc10 -s 16x8 --cell 2 --frame 1 <frame_1.raw", 2,
                  "frame_1.raw: is the input itself");
    EXPECT_EQ(Tarn("bin frame_1.raw -o frame_%d.raw -f qc10 -s 16x8 --cell 2 --frame 0"), 0);
    Write("mosaic.pgm", Read("mosaic.pgm").substr(0, 100));
    ExpectRefused(synth + "-f qc10 --cell 2", 2, "16x8 needs 256");
    Write("mosaic.pgm", "P5 6 2 255\n            ");
    ExpectRefused(synth + "-f qc10 --cell 2", 2, "less than one block of 4x4");
}

TEST_F(ErrorsTest, ARunThatBreaksOffExitsWithOne) {
    ExpectRefused("bin frame.raw -o /dev/full -f qc10 -s 16x8 --cell 2", 1, "No space left");
    ExpectRefused("bin frame.raw -o - -f qc10 -s 16x8 --cell 2 >/dev/full", 1, "No space left");
    ExpectRefused("--help >/dev/full", 1, "standard output: writing broke off");
    ExpectRefused("--man-page >/dev/full", 1, "No space left");
    ExpectRefused("bin frame.raw -o - -f qc10 -s 16x8 --cell 2 >&-", 1, "Bad file descriptor");
    // A file-size limit stands in for a full disk: the temporary file goes, the old one stays.
    EXPECT_EQ(
        Shell("(ulimit -f 1; tarn synth mosaic.pgm -o kept.raw -f qc10 --cell 2 -s 1200x1200)"), 1);
    EXPECT_NE(said_.find("writing broke off"), std::string::npos) << said_;
    EXPECT_EQ(Read("kept.raw"), "what was there before");
    EXPECT_FALSE(HalfFileIsThere());
    // More than a pipe holds, and nobody who reads it.
    Shell("{ tarn synth mosaic.pgm -o - -f qc10 --cell 2 -s 1200x1200; echo $? >code; } | true");
    EXPECT_EQ(Read("code"), "1\n");
    EXPECT_NE(said_.find("Broken pipe"), std::string::npos) << said_;
}

TEST_F(ErrorsTest, WritingFollowsLinksAndKeepsModes) {
    std::filesystem::create_symlink("kept.raw", "link.raw");
    std::filesystem::permissions("kept.raw", std::filesystem::perms(0640));
    ASSERT_EQ(Tarn("bin frame.raw -o link.raw -f qc10 -s 16x8 --cell 2"), 0) << said_;
    EXPECT_TRUE(std::filesystem::is_symlink("link.raw"));
    EXPECT_EQ(Read("kept.raw").size(), 40u);
    EXPECT_EQ(std::filesystem::status("kept.raw").permissions(), std::filesystem::perms(0640));
    // But not the link that standard output is: what is in the file behind it stays there.
    std::filesystem::create_symlink("/dev/stdout", "stdout.raw");
    for (const std::string out : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "stdout.raw"}) {
        Tarn("bin frame.raw -o " + out + " -f qc10 -s 16x8 --cell 2 >>kept.raw");
    }
    EXPECT_EQ(Read("kept.raw").size(), 5 * 40u);
}

}  // namespace
