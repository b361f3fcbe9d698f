// Runs the tool in a folder of its own.
#ifndef TARN_TESTS_TOOL_TOOL_RUNNER_H_
#define TARN_TESTS_TOOL_TOOL_RUNNER_H_

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>

class ToolTest : public ::testing::Test {
 protected:
    ToolTest() {
        std::string pattern = testing::TempDir() + "tarn_tool_XXXXXX";
        folder_ = mkdtemp(pattern.data());
        std::filesystem::current_path(folder_);
    }
    ~ToolTest() override {
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder_);
    }

    // Exit code of a shell command in which "tarn" is the tool; its messages are in said_.
    int Shell(const std::string& command) {
        const int status = std::system(
            ("{ tarn() { " TARN_PROGRAM " \"$@\"; }; " + command + "; } 2>said.txt >out.txt")
                .c_str());
        said_ = Read("said.txt");
        std::filesystem::remove("said.txt");
        std::filesystem::remove("out.txt");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int Tarn(const std::string& arguments) { return Shell("tarn " + arguments); }

    static std::string Read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void Write(const std::string& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }

    // A PGM whose samples, random codes of the given depth, synth takes as they are when it is told
    // that depth's black level.
    static void WriteMosaic(const std::string& path, int width, int height, int bits) {
        std::mt19937 random(static_cast<unsigned>(width + height + bits));
        std::string bytes = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                            std::to_string((1 << bits) - 1) + "\n";
        for (int i = 0; i < width * height; ++i) {
            const unsigned code = static_cast<unsigned>(random()) & ((1u << bits) - 1);
            bytes += static_cast<char>(code >> 8);
            bytes += static_cast<char>(code);
        }
        Write(path, bytes);
    }

    static bool HalfFileIsThere() {
        const std::filesystem::directory_iterator files("."), end;
        return std::any_of(files, end, [](const auto& entry) {
            return entry.path().filename().string().starts_with(".tarn-");
        });
    }

    std::string said_;

 private:
    std::string folder_;
};

// A frame, a mosaic and an existing output, none of which a refused run may touch.
class RefusalTest : public ToolTest {
 protected:
    RefusalTest() {
        WriteMosaic("mosaic.pgm", 16, 8, 10);
        Write("frame.raw", std::string(160, '\x40'));  // 16x8, 10 bits
        Write("kept.raw", "what was there before");
    }

    // Their bytes, by name.
    static std::map<std::string, std::string> Files() {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(".")) {
            files[entry.path().string()] = entry.is_regular_file() ? Read(entry.path()) : "";
        }
        return files;
    }
    void ExpectRefused(const std::string& arguments, int exitCode, const std::string& reason) {
        SCOPED_TRACE(arguments);
        const auto before = Files();
        EXPECT_EQ(Tarn(arguments), exitCode);
        EXPECT_NE(said_.find(reason), std::string::npos) << said_;
        EXPECT_EQ(said_.find('\n'), said_.size() - 1) << "not one line: " << said_;
        EXPECT_TRUE(Files() == before) << "a file came, went or changed";
    }
};

#endif  // TARN_TESTS_TOOL_TOOL_RUNNER_H_
