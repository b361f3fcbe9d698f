// Many frames, many files, many threads: the same bytes in the same order, and what is left when
// something goes wrong.
#include "tool_runner.h"

namespace {

class SequenceTest : public ToolTest {
 protected:
    static std::string RandomBytes(size_t count, unsigned seed) {
        std::mt19937 random(seed);
        std::string bytes(count, '\0');
        for (char& c : bytes) c = static_cast<char>(random());
        return bytes;
    }
    void Bin(const std::string& arguments) { ASSERT_EQ(Tarn("bin " + arguments), 0) << said_; }
};

// Any bytes are a frame, and ten frames one above the other are a frame as well: large enough for
// many strips, and of a width that Nona reads past.
TEST_F(SequenceTest, NoWayThroughThreadsAndPipesChangesAByte) {
    const std::string bytes = RandomBytes(size_t{3503} * 1200, 1);
    Write("frames.raw", "header" + bytes);
    Write("bare.raw", bytes);
    const struct {
        std::string name, layout, cell;
    } kWays[] = {{"ev", "qc10 --gain 0.7", "1"},
                 {"tetra", "vx12 --out-bits 10 --gain 1.5", "2"},
                 {"nona", "qc10 --gain 1.5", "3"},
                 {"hexadeca", "vx10 --gain 3", "4"}};
    for (const auto& way : kWays) {
        SCOPED_TRACE(way.name);
        const std::string how = " -q --pitch 3503 --cell " + way.cell + " -f " + way.layout;
        const std::string frames = how + " -s 2333x120 --frame all ";
        const std::string one = how + " -s 2333x1200 --out-pitch 3600 ";
        const std::string ten = frames + "--out-pitch 3600 ";
        Bin("frames.raw -o expected.raw --offset 6 --threads 1" + one);
        const std::string expected = Read("expected.raw");
        ASSERT_EQ(expected.size(), 3600u * (1200 / std::stoul(way.cell)));
        for (const std::string threads : {"--threads 1", "--threads 2", "--threads 7", ""}) {
            for (const std::string& from :
                 {"bare.raw" + one, "bare.raw" + ten, "- <bare.raw" + one, "- <bare.raw" + ten,
                  "- --offset 6 <frames.raw" + ten}) {
                Bin(from + threads + " -o got.raw");
                EXPECT_TRUE(Read("got.raw") == expected) << from << threads;
                Bin(from + threads + " -o - | cat >got.raw");
                EXPECT_TRUE(Read("got.raw") == expected) << from << threads << " piped";
            }
            Bin("bare.raw -o part_%02d.raw " + ten + threads);
            std::string parts;
            for (int i = 0; i < 10; ++i) parts += Read("part_0" + std::to_string(i) + ".raw");
            EXPECT_TRUE(parts == expected) << threads;
        }
        EXPECT_EQ(Shell("LD_PRELOAD=" TARN_THREADLESS_LIBRARY
                        " tarn bin bare.raw -o got.raw --threads 7 " +
                        ten),
                  0)
            << said_;
        EXPECT_TRUE(Read("got.raw") == expected) << "with no threads to be had";
        Bin("bare.raw -o a%d.pgm --threads 3 " + frames);
        Bin("- <bare.raw -o b%d.pgm --threads 1 " + frames);
        for (const char* i : {"0", "9"}) {
            EXPECT_EQ(Read(std::string("a") + i + ".pgm"), Read(std::string("b") + i + ".pgm"));
            EXPECT_GT(Read(std::string("a") + i + ".pgm").size(), 1000u);
        }
    }
}

TEST_F(SequenceTest, ManyFilesAreTakenInTheirOrderAndNamed) {
    for (const char* name : {"x.raw", "y.z.raw", "50%.raw"}) {
        Write(name, RandomBytes(160, unsigned(name[0])));
    }
    const std::string how = " -f qc10 -s 16x8 --cell 2 ";
    Bin("x.raw y.z.raw 50%.raw -o all.raw" + how);
    Bin("x.raw y.z.raw 50%.raw -o %s.out" + how);
    Bin("x.raw y.z.raw 50%.raw -o 100%%%d%_%03d" + how);
    EXPECT_EQ(Read("all.raw"), Read("x.out") + Read("y.z.out") + Read("50%.out"));
    EXPECT_EQ(Read("all.raw"), Read("100%0%_000") + Read("100%1%_001") + Read("100%2%_002"));
    EXPECT_EQ(Read("all.raw").size(), 120u);
    Bin("x.raw y.z.raw -o %s_%d.out --frame 1 -f qc10 -s 16x4 --cell 2");
    EXPECT_EQ(Read("x_1.out"), Read("x.out").substr(20));
    EXPECT_EQ(Tarn("bin - -o x_%d.out --frame 0-2 -f qc10 -s 16x4 --cell 2 <x.raw"), 2);
    EXPECT_NE(said_.find("no frame 2; standard input ends before it; files written before: 2"),
              std::string::npos)
        << said_;
}

TEST_F(SequenceTest, OneBadFileKeepsNoOtherFromBeingWritten) {
    for (const char* name : {"a.raw", "b.raw", "c.raw"}) Write(name, RandomBytes(160, 1));
    Write("b.raw", "short");
    const std::string bin = "bin a.raw b.raw absent.raw c.raw -f qc10 -s 16x8 --cell 2 ";
    EXPECT_EQ(Tarn(bin + "-o %s.out"), 2);
    EXPECT_NE(said_.find("tarn: b.raw holds 5 bytes; 16x8 qc10 at pitch 20 needs 160\n"),
              std::string::npos)
        << said_;
    EXPECT_NE(said_.find("tarn: absent.raw: cannot be read"), std::string::npos) << said_;
    EXPECT_NE(said_.find("failed: 2; files written: 2"), std::string::npos) << said_;
    EXPECT_EQ(Read("a.out").size(), 40u);
    EXPECT_EQ(Read("c.out"), Read("a.out"));
    EXPECT_FALSE(std::filesystem::exists("b.out"));

    Write("all.out", "what was there before");
    EXPECT_EQ(Tarn(bin + "-o all.out"), 2);
    EXPECT_EQ(Read("all.out"), "what was there before");
    EXPECT_FALSE(HalfFileIsThere());
}

TEST_F(SequenceTest, WhenWritingFailsWhatWasCompleteStays) {
    for (const char* name : {"a.raw", "b.raw", "c.raw"}) Write(name, RandomBytes(160, 1));
    std::filesystem::create_symlink("/dev/full", "b.out");
    EXPECT_EQ(Tarn("bin a.raw b.raw c.raw -o %s.out --threads 1 -f qc10 -s 16x8 --cell 2"), 1);
    EXPECT_NE(said_.find("No space left"), std::string::npos) << said_;
    EXPECT_NE(said_.find("; files written before: 1"), std::string::npos) << said_;
    EXPECT_EQ(Read("a.out").size(), 40u);
    EXPECT_FALSE(std::filesystem::exists("c.out"));
    EXPECT_FALSE(HalfFileIsThere());
}

TEST_F(SequenceTest, AnInterruptLeavesNoHalfFile) {
    Write("kept.raw", "what was there before");
    ASSERT_EQ(Shell("mkfifo pipe; exec 3<>pipe; " TARN_PROGRAM
                    " bin - -o kept.raw --frame all -f qc10 -s 16x8 --cell 2 <pipe & "
                    "for i in $(seq 600); do ls -A | grep -q .tarn- && break; sleep 0.05; done; "
                    "ls -A >seen.txt; kill -TERM $!; wait $!; echo $? >code.txt"),
              0);
    EXPECT_NE(Read("seen.txt").find(".tarn-"), std::string::npos);
    EXPECT_EQ(Read("code.txt"), "143\n");
    EXPECT_EQ(Read("kept.raw"), "what was there before");
    EXPECT_FALSE(HalfFileIsThere());
}

TEST_F(SequenceTest, TimesAreReportedByTheirKind) {
    Write("frame.raw", RandomBytes(size_t{500} * 400, 1));
    Bin("frame.raw -o out.raw --json -f qc10 -s 400x400 --cell 2 --threads 1 >report.json");
    const std::string report = Read("report.json");
    for (const char* key : {"milliseconds\"", "milliseconds_reading", "milliseconds_writing",
                            "milliseconds_elapsed", "\"frames\": 1", "\"threads\": 1"}) {
        EXPECT_NE(report.find(key), std::string::npos) << key;
    }
}

}  // namespace
