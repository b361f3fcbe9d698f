// One frame cut into strips over threads. The library starts none itself; calls on separate strips
// may run in parallel, each with an engine of its own.
#include <TarnQCEngine.h>

#include <cstdio>
#include <thread>
#include <vector>

namespace {

constexpr int kCell = 2;  // Tetra; 3 for Nona, 4 for Hexadeca
constexpr SensorInfo kSensor = {1.0f, 1.5f};

// Output rows first..last-1, and the cell rows they are made of. Widths and inHeight stay the whole
// frame's: the QC stride check compares pitches with them. outHeight is the strip's, so the pitches
// must be real ones that no strip height equals; CheckStride on the whole frame has settled them.
void BinStrip(unsigned char* src, unsigned char* dst, BufferInfo info, int first, int last) {
    info.outHeight = last - first;
    TarnQCEngine().Binning_10bit_Tetra(src + static_cast<ptrdiff_t>(first) * kCell * info.inStride,
                                       dst + static_cast<ptrdiff_t>(first) * info.outStride, info,
                                       kSensor);
}

}  // namespace

int main() {
    BufferInfo info = {4000, 0, 3000, 2000, 0, 1500};
    TarnQCEngine().CheckStride(&info);  // 5040 and 2560
    std::vector<unsigned char> src(static_cast<size_t>(info.inStride) * info.inHeight);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = static_cast<unsigned char>(i * 2654435761u >> 13);
    std::vector<unsigned char> whole(static_cast<size_t>(info.outStride) * info.outHeight);
    std::vector<unsigned char> inStrips(whole.size());

    TarnQCEngine().Binning_10bit_Tetra(src.data(), whole.data(), info, kSensor);

    constexpr int kStrips = 4;
    std::vector<std::thread> threads;
    for (int i = 0; i < kStrips; ++i) {
        threads.emplace_back(BinStrip, src.data(), inStrips.data(), info,
                             info.outHeight * i / kStrips, info.outHeight * (i + 1) / kStrips);
    }
    for (std::thread& thread : threads) thread.join();

    std::printf("%s\n", whole == inStrips ? "same bytes" : "different bytes");
    return whole == inStrips ? 0 : 1;
}
