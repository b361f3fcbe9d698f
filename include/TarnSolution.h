/// @file
/// Public interface of libTarn.camera.mirova.so: software binning of packed multi-cell raw frames.
///
/// Life cycle: TarnSolution_initialize, Init once, then any number of SetParam and Process in any
/// order, then Release, then TarnSolution_destroy. One object must not be used from two threads at
/// once; separate objects share nothing.
///
/// The client's errno, rounding mode and signals are left as they are. Gains assume rounding to
/// nearest, which is a thread's usual mode; under another one a compensated value may be cut to its
/// neighbour.
///
/// This header compiles alone, as C++11 and later.
#ifndef TARN_SOLUTION_H_
#define TARN_SOLUTION_H_

#include <memory>

/// Marks what the library exports.
#define TARN_API __attribute__((visibility("default")))
/// Marks what stays inside although it is declared here.
#define TARN_LOCAL __attribute__((visibility("hidden")))

/// Geometry of one frame. Pitches are in bytes from one row to the next; they may exceed the packed
/// row (row padding) and are passed by value everywhere: the client's record never changes.
struct BufferInfo {
    int inWidth;    ///< pixels
    int inStride;   ///< bytes
    int inHeight;   ///< rows
    int outWidth;   ///< pixels; equal to inWidth: no binning, exposure compensation only
    int outStride;  ///< bytes
    int outHeight;  ///< rows
};

/// What the operations are told about brightness.
struct SensorInfo {
    float auxRatio;         ///< stored and passed on, read by no operation
    float brightnessRatio;  ///< gain around the black level; binning applies it only above 1.0
};

/// What SetParam sets.
enum CameraProperty : int {
    PROP_INPUT_FORMAT = 0,    ///< format code of the source, truncated to an int; 10..19: 12 bits
    PROP_OUTPUT_FORMAT = 10,  ///< format code of the destination, likewise
    PROP_BRIGHTNESS_RATIO = 20,  ///< SensorInfo::brightnessRatio, any float; initially 1.0
    PROP_AUX_RATIO = 30,         ///< SensorInfo::auxRatio, any float; initially 1.0
};

/// The interface through which a client uses a solution.
class TARN_API TarnBinningAbstract {
 public:
    /// Valid in every state; frees whatever the solution still holds.
    virtual ~TarnBinningAbstract();

    /// Creates the engine of a family: 0 is QC (MIPI CSI-2 packing), 1 is VX (LSB-first bit
    /// stream). Returns 0, or -1 for another option, on an object already initialised, or after
    /// Release.
    virtual int Init(int option) = 0;

    /// Destroys engines and settings. Afterwards only destruction is useful: Init, SetParam and
    /// Process answer -1 and touch nothing.
    virtual void Release() = 0;

    /// Stores one setting; an unknown property is ignored. Returns 0 (-1 after Release).
    virtual int SetParam(CameraProperty property, float value) = 0;

    /// Processes one frame from src to dst. Buffers and pitches are the caller's responsibility:
    /// nothing is validated, and the answer is 0 whatever happened (-1 after Release).
    ///
    /// The operation follows from the family, the widths and the format codes: equal widths give
    /// exposure compensation; else inWidth >= 16000 gives 4x4 binning, >= 12000 gives 3x3 binning,
    /// anything narrower gives 2x2 binning.
    virtual int Process(unsigned char* src, unsigned char* dst, BufferInfo info) = 0;
};

extern "C" {

/// A new solution with default settings, not yet initialised; null when there is no memory.
TARN_API TarnBinningAbstract* TarnSolution_initialize(void);

/// Deletes a solution, in whatever state it is. A null pointer is ignored.
TARN_API void TarnSolution_destroy(TarnBinningAbstract* solution);
}

/// What TarnSolution_initialize returns. A client may also construct it directly; where there was
/// no memory for its private half it then answers as after Release.
class TARN_API TarnSolution : public TarnBinningAbstract {
 public:
    TarnSolution();
    ~TarnSolution() override;

    int Init(int option) override;
    void Release() override;
    int SetParam(CameraProperty property, float value) override;
    int Process(unsigned char* src, unsigned char* dst, BufferInfo info) override;

 private:
    friend TarnBinningAbstract* TarnSolution_initialize(void);
    class TARN_LOCAL impl;

    int debugLevel;
    std::unique_ptr<impl> pImpl;
};

#endif  // TARN_SOLUTION_H_
