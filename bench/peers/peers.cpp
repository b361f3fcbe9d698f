// The library beside what people use instead: OpenCV and libyuv as they are ordinarily used (unpack
// to 16 bits, scale by the cell with area averaging, pack again), one thread, and a copy of the
// input. Each peer twice: as plain user code has it, where every frame makes its own images, and
// with the images between its steps kept from frame to frame.
//
// Prints each peer's time as a multiple of ours: medians of interleaved runs over rotating buffers.
#include <libyuv/scale.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <random>
#include <vector>

#include "engines/TarnQCEngine.h"
#include "layout/packed_layouts.h"

namespace {

using tarn::QCRaw10;
using Bytes = std::vector<uint8_t>;

constexpr int kWidth = 8160;
constexpr int kHeight = 6120;
constexpr int kPitch = kWidth / 4 * 5;
constexpr float kGain = 1.37f;
constexpr float kPedestal = 64.0f;

// The images between a peer's steps.
struct Frames {
    cv::Mat pixels, result;
};

void Unpack(const Bytes& packed, Frames& frames) {
    cv::Mat& pixels = frames.pixels;
    pixels.create(kHeight, kWidth, CV_16U);
    for (int y = 0; y < kHeight; ++y) {
        const uint8_t* group = packed.data() + size_t{kPitch} * static_cast<size_t>(y);
        uint16_t* row = pixels.ptr<uint16_t>(y);
        for (int x = 0; x < kWidth; x += 4, group += 5) QCRaw10::Unpack(group, row + x);
    }
}

void Pack(const cv::Mat& pixels, Bytes& packed, int pitch) {
    for (int y = 0; y < pixels.rows; ++y) {
        uint8_t* group = packed.data() + static_cast<size_t>(pitch) * static_cast<size_t>(y);
        const uint16_t* row = pixels.ptr<uint16_t>(y);
        for (int x = 0; x + 4 <= pixels.cols; x += 4, group += 5) QCRaw10::Pack(row + x, group);
    }
}

const cv::Mat& ScaleOpenCv(Frames& frames, int cell) {
    cv::resize(frames.pixels, frames.result, {kWidth / cell, kHeight / cell}, 0, 0, cv::INTER_AREA);
    return frames.result;
}

const cv::Mat& ScaleLibyuv(Frames& frames, int cell) {
    cv::Mat& binned = frames.result;
    binned.create(kHeight / cell, kWidth / cell, CV_16U);
    libyuv::ScalePlane_16(frames.pixels.ptr<uint16_t>(), kWidth, kWidth, kHeight,
                          binned.ptr<uint16_t>(), binned.cols, binned.cols, binned.rows,
                          libyuv::kFilterBox);
    return binned;
}

const cv::Mat& CompensateOpenCv(Frames& frames) {
    cv::Mat& result = frames.result;
    frames.pixels.convertTo(result, CV_16U, kGain, kPedestal * (1.0f - kGain));
    cv::max(result, static_cast<double>(kPedestal), result);
    cv::min(result, 1023.0, result);
    return result;
}

// Of this thread's own running: a busy machine takes turns away from a clock on the wall.
double Now() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

double Milliseconds(const std::function<void()>& work) {
    const double start = Now();
    work();
    return Now() - start;
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

// A peer rounds where the library truncates: one code apart is the same answer.
void ExpectSimilar(const char* name, const Bytes& ours, const Bytes& theirs, size_t bytes) {
    for (size_t group = 0; group + 5 <= bytes; group += 5) {
        uint16_t a[4], b[4];
        QCRaw10::Unpack(ours.data() + group, a);
        QCRaw10::Unpack(theirs.data() + group, b);
        for (int k = 0; k < 4; ++k) {
            if (std::abs(a[k] - b[k]) > 1) {
                std::fprintf(stderr, "%s computes something else: %d for our %d\n", name, b[k],
                             a[k]);
                std::exit(1);
            }
        }
    }
}

struct Peer {
    const char* name;
    std::function<void(const Bytes& src, Bytes& dst)> run;
    bool sameResult;
};

using Work = std::function<void(const Bytes& src, Bytes& dst, Frames& frames)>;

// The peer with images of its own for each frame, and with kept ones.
void AddBothWays(std::vector<Peer>& peers, const char* fresh, const char* kept, const Work& work,
                 bool sameResult) {
    static Frames keptFrames;
    peers.push_back({fresh,
                     [work](const Bytes& src, Bytes& dst) {
                         Frames frames;
                         work(src, dst, frames);
                     },
                     sameResult});
    peers.push_back(
        {kept, [work](const Bytes& src, Bytes& dst) { work(src, dst, keptFrames); }, sameResult});
}

void Compare(const char* operation, int cell, const Peer& ours, const std::vector<Peer>& peers,
             int rounds) {
    const size_t outBytes = size_t{kPitch} / static_cast<size_t>(cell) * (kHeight / cell);
    std::vector<Bytes> src(3, Bytes(size_t{kPitch} * kHeight));
    std::vector<Bytes> dst(3, Bytes(size_t{kPitch} * kHeight)), peerDst = dst;
    std::mt19937 random(1);
    for (Bytes& frame : src)
        std::generate(frame.begin(), frame.end(), [&] { return random() >> 24; });

    std::vector<double> ourTimes;
    std::vector<std::vector<double>> peerTimes(peers.size());
    for (int round = 0; round < rounds; ++round) {
        const size_t turn = static_cast<size_t>(round) % src.size();
        ourTimes.push_back(Milliseconds([&] { ours.run(src[turn], dst[turn]); }));
        for (size_t i = 0; i < peers.size(); ++i) {
            const size_t next = (turn + 1 + i) % src.size();
            peerTimes[i].push_back(Milliseconds([&] { peers[i].run(src[next], peerDst[next]); }));
        }
    }
    const double our = Median(ourTimes);
    std::printf("%-12s %8.2f ms", operation, our);
    for (size_t i = 0; i < peers.size(); ++i) {
        std::printf("   %s %6.1f x", peers[i].name, Median(peerTimes[i]) / our);
        if (peers[i].sameResult) {
            ours.run(src[0], dst[0]);
            peers[i].run(src[0], peerDst[0]);
            ExpectSimilar(peers[i].name, dst[0], peerDst[0], outBytes);
        }
    }
    std::printf("\n");
}

const Peer kCopy = {
    "memcpy", [](const Bytes& src, Bytes& dst) { std::memcpy(dst.data(), src.data(), src.size()); },
    false};

struct Pattern {
    const char* name;
    int cell;
    int (TarnQCEngine::*bin)(unsigned char*, unsigned char*, BufferInfo, SensorInfo);
};

void ComparePattern(const Pattern& pattern, int rounds) {
    const int cell = pattern.cell;
    const BufferInfo info = {kWidth, kPitch, kHeight, kWidth / cell, kPitch / cell, kHeight / cell};
    TarnQCEngine engine;
    const Peer ours = {
        "ours",
        [&](const Bytes& src, Bytes& dst) {
            (engine.*pattern.bin)(const_cast<uint8_t*>(src.data()), dst.data(), info, {1.0f, 1.0f});
        },
        true};
    std::vector<Peer> peers;
    const auto add = [&](const char* name, auto scale) {
        AddBothWays(
            peers, name, "kept",
            [cell, scale](const Bytes& src, Bytes& dst, Frames& frames) {
                Unpack(src, frames);
                Pack(scale(frames, cell), dst, kPitch / cell);
            },
            cell != 4);
    };
    add("OpenCV", ScaleOpenCv);
    add("libyuv", ScaleLibyuv);
    peers.push_back(kCopy);
    Compare(pattern.name, cell, ours, peers, rounds);
}

void CompareCompensation(int rounds) {
    const BufferInfo same = {kWidth, kPitch, kHeight, kWidth, kPitch, kHeight};
    TarnQCEngine engine;
    const Peer ours = {
        "ours",
        [&](const Bytes& src, Bytes& dst) {
            engine.EVComp_10bit(const_cast<uint8_t*>(src.data()), dst.data(), same, {1.0f, kGain});
        },
        true};
    std::vector<Peer> peers;
    AddBothWays(
        peers, "OpenCV", "kept",
        [](const Bytes& src, Bytes& dst, Frames& frames) {
            Unpack(src, frames);
            Pack(CompensateOpenCv(frames), dst, kPitch);
        },
        true);
    peers.push_back(kCopy);
    Compare("EV", 1, ours, peers, rounds);
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(3, std::atoi(argv[1])) : 9;
    cv::setNumThreads(1);
    std::printf("%dx%d, QC 10 bits, one thread; multiples of our time, medians of %d runs\n",
                kWidth, kHeight, rounds);
    ComparePattern({"Tetra", 2, &TarnQCEngine::Binning_10bit_Tetra}, rounds);
    ComparePattern({"Nona", 3, &TarnQCEngine::Binning_10bit_Nona}, rounds);
    ComparePattern({"Hexadeca", 4, &TarnQCEngine::Binning_10bit_Hexadeca}, rounds);
    CompareCompensation(rounds);
    return 0;
}
