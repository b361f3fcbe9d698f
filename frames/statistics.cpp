#include "frames/statistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "frames/message.h"
#include "frames/picture.h"
#include "frames/safe_call.h"

namespace tarn::frames {
namespace {

double Share(int64_t part, int64_t whole) {
    return whole > 0 ? double(part) / double(whole) : 0;
}

int64_t Sum(const std::vector<int64_t>& counts, size_t from, size_t to) {
    return std::accumulate(counts.begin() + int64_t(from), counts.begin() + int64_t(to),
                           int64_t{0});
}

void CountCodes(const PackedFrame& frame, const std::vector<uint16_t>& codes, int cell,
                Statistics* statistics) {
    for (Tones& tones : statistics->position) {
        tones.histogram.assign(size_t{1} << Shape(frame.layout).bits, 0);
    }
    auto code = codes.begin();
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            ++statistics->position[y / cell % 2 * 2 + x / cell % 2].histogram[*code++];
        }
    }
}

// Sums over whole cells: of clipped ones their number, and the light at each place inside.
void MeasureCells(const PackedFrame& frame, const std::vector<uint16_t>& codes, int cell,
                  Statistics* statistics) {
    const int bits = Shape(frame.layout).bits;
    const int black = 1 << (bits - 4), white = (1 << bits) - 1;
    const int64_t cells = int64_t{frame.width / cell} * (frame.height / cell);
    int64_t clipped = 0;
    std::vector<double> light(static_cast<size_t>(cell * cell));
    for (int y = 0; y + cell <= frame.height; y += cell) {
        for (int x = 0; x + cell <= frame.width; x += cell) {
            bool isClipped = false;
            for (int place = 0; place < cell * cell; ++place) {
                const int64_t at = int64_t{frame.width} * (y + place / cell) + x + place % cell;
                isClipped |= codes[size_t(at)] == white;
                light[size_t(place)] += codes[size_t(at)] - black;
            }
            clipped += isClipped;
        }
    }
    statistics->clippedCells = Share(clipped, cells);
    const double mean = std::accumulate(light.begin(), light.end(), 0.0) / double(light.size());
    if (mean <= 0) return;  // no light, no imbalance of it
    for (int place = 0; place < cell * cell; ++place) {
        const double deviation = light[size_t(place)] / mean - 1;
        if (std::abs(deviation) <= std::abs(statistics->imbalance)) continue;
        statistics->imbalance = deviation;
        statistics->imbalanceColumn = place % cell;
        statistics->imbalanceRow = place / cell;
    }
}

std::string DescribePadding(const PackedFrame& frame, const Bytes& bytes) {
    const int64_t rowBytes = frame.RowBytes();
    if (rowBytes == frame.pitch) return "none";
    int least = 255, most = 0;
    for (int64_t at = 0; at < static_cast<int64_t>(bytes.size()); ++at) {
        if (at % frame.pitch < rowBytes) {
            at += rowBytes - at % frame.pitch - 1;
            continue;
        }
        least = std::min<int>(least, bytes[size_t(at)]);
        most = std::max<int>(most, bytes[size_t(at)]);
    }
    const std::string size = Text(frame.pitch - rowBytes, " bytes a row");
    if (least > most) return size + ", absent in the only row";
    if (least == most) return Text(size, ", all ", least);
    return Text(size, ", in use: values from ", least, " to ", most);
}

}  // namespace

int64_t Tones::Count() const {
    return Sum(histogram, 0, histogram.size());
}

double Tones::Mean() const {
    double sum = 0;
    for (size_t code = 0; code < histogram.size(); ++code) {
        sum += double(code) * double(histogram[code]);
    }
    return Count() > 0 ? sum / double(Count()) : 0;
}

int Tones::Percentile(double percent) const {
    const double wanted = std::max(1.0, std::ceil(double(Count()) * percent / 100));
    int64_t seen = 0;
    for (size_t code = 0; code < histogram.size(); ++code) {
        seen += histogram[code];
        if (double(seen) >= wanted) return static_cast<int>(code);
    }
    return 0;
}

Statistics MeasureFrame(const PackedFrame& frame, const Bytes& bytes, int cell) {
    const std::vector<uint16_t> codes = Unpack(frame, bytes.data());
    const size_t black = size_t{1} << (Shape(frame.layout).bits - 4);
    Statistics statistics{};
    CountCodes(frame, codes, cell, &statistics);
    int64_t clipped = 0, below = 0;
    for (const Tones& tones : statistics.position) {
        clipped += tones.histogram.back();
        below += Sum(tones.histogram, 0, black);
    }
    statistics.clippedPixels = Share(clipped, static_cast<int64_t>(codes.size()));
    statistics.belowBlack = Share(below, static_cast<int64_t>(codes.size()));
    MeasureCells(frame, codes, cell, &statistics);
    statistics.padding = DescribePadding(frame, bytes);
    return statistics;
}

double ClippedByGain(const PackedFrame& frame, const Bytes& bytes, int cell, float gain) {
    const BinTask task = MakeTask(frame, frame.layout, cell, gain);
    CheckTask("--gain", task);
    Bytes binned(static_cast<size_t>(task.out.Bytes()));
    RunTask(task, bytes, binned);
    const std::vector<uint16_t> codes = Unpack(task.out, binned.data());
    const int64_t clipped =
        std::count(codes.begin(), codes.end(), (1 << Shape(task.out.layout).bits) - 1);
    return Share(clipped, static_cast<int64_t>(codes.size()));
}

}  // namespace tarn::frames
