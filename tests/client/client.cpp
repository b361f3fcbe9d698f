// A client that knows the library by its own declarations alone, built by another compiler than the
// library: object layout, virtual slots, calling convention and names must hold across both.
#include <cstdio>
#include <cstring>

struct BufferInfo {
    int inWidth, inStride, inHeight, outWidth, outStride, outHeight;
};
struct SensorInfo {
    float auxRatio, brightnessRatio;
};
enum CameraProperty : int {};

class TarnBinningAbstract {
 public:
    virtual ~TarnBinningAbstract();
    virtual int Init(int) = 0;
    virtual void Release() = 0;
    virtual int SetParam(CameraProperty, float) = 0;
    virtual int Process(unsigned char*, unsigned char*, BufferInfo) = 0;
};
class TarnSolution : public TarnBinningAbstract {
 public:
    TarnSolution();
    ~TarnSolution() override;
    int Init(int) override;
    void Release() override;
    int SetParam(CameraProperty, float) override;
    int Process(unsigned char*, unsigned char*, BufferInfo) override;

    int debugLevel;
    void* pImpl;
};
class TarnVXEngine {
 public:
    TarnVXEngine();
    ~TarnVXEngine();
    int Binning_10bit_Tetra(unsigned char*, unsigned char*, BufferInfo, SensorInfo, int);
    int EVComp(unsigned short*, int, int, float);
};
class TarnQCNEONEngine {
 public:
    TarnQCNEONEngine();
    ~TarnQCNEONEngine();
    int CalcStride(int);
    void neon_Memcpy(void*, void*, int);
};
extern "C" TarnBinningAbstract* TarnSolution_initialize(void);
extern "C" void TarnSolution_destroy(TarnBinningAbstract*);

static int failures = 0;

static void Check(bool good, const char* what) {
    if (good) return;
    ++failures;
    std::printf("failed: %s\n", what);
}

// The slots as any client's compiler numbers them: two destructors, then the four operations.
static void CheckSlots() {
    TarnBinningAbstract* solution = TarnSolution_initialize();
    void*** object = reinterpret_cast<void***>(solution);
    const auto init = reinterpret_cast<int (*)(void*, int)>((*object)[2]);
    const auto release = reinterpret_cast<void (*)(void*)>((*object)[3]);
    const auto setParam = reinterpret_cast<int (*)(void*, int, float)>((*object)[4]);
    const auto process =
        reinterpret_cast<int (*)(void*, unsigned char*, unsigned char*, BufferInfo)>((*object)[5]);
    const auto deleting = reinterpret_cast<void (*)(void*)>((*object)[1]);

    // Four pixels of 250 with gain 1.5: 256 + 1.5 * 744 = 1372, 1372 / 4 = 343 = 0x55 * 4 + 3.
    unsigned char src[2][5] = {{62, 62, 62, 62, 0xAA}, {62, 62, 62, 62, 0xAA}};
    unsigned char dst[6] = {1, 1, 1, 1, 1, 7};
    const unsigned char expected[6] = {0x55, 0x55, 0x10, 0x10, 0x0F, 7};
    Check(init(solution, 0) == 0 && init(solution, 0) == -1, "Init");
    Check(setParam(solution, 20, 1.5f) == 0, "SetParam");
    Check(process(solution, src[0], dst, {4, 5, 2, 2, 5, 1}) == 0 &&
              std::memcmp(dst, expected, 6) == 0,
          "Process");
    release(solution);
    Check(init(solution, 0) == -1, "Init after Release");
    deleting(solution);
}

static void CheckObject() {
    Check(sizeof(TarnSolution) == 24, "size of TarnSolution");
    TarnSolution solution;
    Check(solution.debugLevel == 0 && solution.pImpl != nullptr, "fields after construction");
    solution.Release();
    Check(solution.pImpl == nullptr, "no private half after Release");
}

static void CheckEngines() {
    // Both cells sum to 2 * (1023 + 0) = 2 * (341 + 682) = 0x7FE.
    unsigned char src[10] = {0xFF, 3, 0x50, 0x95, 0xAA, 0xFF, 3, 0x50, 0x95, 0xAA};
    unsigned char dst[4] = {0, 0, 0, 7};
    const unsigned char expected[4] = {0xFE, 0xE7, 0x7F, 7};
    TarnVXEngine vx;
    Check(vx.Binning_10bit_Tetra(src, dst, {4, 5, 2, 2, 3, 1}, {1.0f, 1.0f}, 10) == 0 &&
              std::memcmp(dst, expected, 4) == 0,
          "VX Binning_10bit_Tetra");

    unsigned short values[6] = {0, 64, 65, 100, 600, 7};
    const unsigned short compensated[6] = {64, 64, 66, 136, 1023, 7};
    Check(vx.EVComp(values, 5, 10, 2.0f) == 0 && std::memcmp(values, compensated, 12) == 0,
          "EVComp");

    TarnQCNEONEngine neon;
    neon.neon_Memcpy(values, src, 10);
    Check(neon.CalcStride(4000) == 5040 && std::memcmp(src, compensated, 10) == 0, "NEON engine");
}

// The library serves before main as well: it has no state that must be set up first.
static const struct BeforeMain {
    BeforeMain() { CheckSlots(); }
} beforeMain;

int main() {
    CheckSlots();
    CheckObject();
    CheckEngines();
    return failures == 0 ? 0 : 1;
}
