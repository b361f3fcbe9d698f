/// @file
/// Tells, before a call of the library, what the call would do and the first thing wrong with it.
///
/// TarnSolution::Process trusts its caller and answers 0 whatever happens. Ask here first:
///
///     TarnCall call = TarnCheckProcess(option, inFormat, outFormat, info, srcBytes, dstBytes);
///     if (call.problem != TarnProblem::None) return Refuse(call.sentence);
///
/// Header only, nothing is exported for it, and it calls nothing of the library. Compiles alone, as
/// C++11 and later.
#ifndef TARN_CHECKED_H_
#define TARN_CHECKED_H_

#include <cstdarg>
#include <cstdio>

#include "TarnSolution.h"

/// The frame operations of the engine classes. None: Process would not touch the destination.
enum class TarnOperation {
    None,
    QCEVComp10,
    QCEVComp12,
    QCTetra10,
    QCTetra12,
    QCNona,
    QCHexadeca,
    VXEVComp10,
    VXEVComp12,
    VXTetra10,
    VXTetra12,
    VXNona,
    VXHexadeca,
    NEONTetra10,
    NEONHexadeca,
};

/// What can be wrong with a call.
enum class TarnProblem {
    None,
    UnknownOption,        ///< neither 0 (QC) nor 1 (VX)
    NoOperation,          ///< the family has none for this cell and these depths
    EmptyFrame,           ///< a width or height below 1
    FormatMismatch,       ///< the format codes do not describe what the operation reads and writes
    WidthMismatch,        ///< the widths, or heights, do not fit the cell of the operation
    PitchReplaced,        ///< a genuine pitch that the operation would take for a missing one
    PitchTooShort,        ///< a pitch shorter than the bytes of a row
    PitchesDiffer,        ///< exposure compensation uses one pitch for both buffers
    PitchNotWholeGroups,  ///< exposure compensation leaves the end of each row untouched
    WidthOverLine,        ///< the NEON engine's line holds 4096 pixels
    SourceTooSmall,
    DestinationTooSmall,
};

/// What one call would do.
struct TarnCall {
    TarnOperation operation;  ///< what runs
    const char* name;         ///< for example "TarnQCEngine::Binning_10bit_Tetra"
    int inStride;   ///< the input pitch that the operation will use, filled in where it was missing
    int outStride;  ///< likewise the output pitch
    long long srcBytes;   ///< bytes from the buffer's first one through the last one read; 0 where
                          ///< the geometry itself is wrong
    long long dstBytes;   ///< likewise through the last one written
    TarnProblem problem;  ///< the first thing wrong
    char sentence[192];  ///< the same for a person: what is wrong and what would be right; or empty
};

/// @cond internal
namespace tarn_checked {

// What an operation reads and writes. An output depth of 0 is the VX choice: 12 bits when the
// output format is 10, else 10 bits.
struct Facts {
    const char* name;
    int cell;  // 1: exposure compensation
    int inBits;
    int outBits;
    bool fillsPitches;
    bool neonLine;
};

inline const Facts& FactsOf(TarnOperation operation) {
    static const Facts facts[] = {
        {"no operation", 1, 10, 10, false, false},
        {"TarnQCEngine::EVComp_10bit", 1, 10, 10, false, false},
        {"TarnQCEngine::EVComp_12bit", 1, 12, 12, false, false},
        {"TarnQCEngine::Binning_10bit_Tetra", 2, 10, 10, true, false},
        {"TarnQCEngine::Binning_12bit_Tetra", 2, 12, 12, true, false},
        {"TarnQCEngine::Binning_10bit_Nona", 3, 10, 10, false, false},
        {"TarnQCEngine::Binning_10bit_Hexadeca", 4, 10, 10, true, false},
        {"TarnVXEngine::EVComp_10bit", 1, 10, 10, false, false},
        {"TarnVXEngine::EVComp_12bit", 1, 12, 12, false, false},
        {"TarnVXEngine::Binning_10bit_Tetra", 2, 10, 0, false, false},
        {"TarnVXEngine::Binning_12bit_Tetra", 2, 12, 0, false, false},
        {"TarnVXEngine::Binning_10bit_Nona", 3, 10, 10, false, false},
        {"TarnVXEngine::Binning_10bit_Hexadeca", 4, 10, 0, false, false},
        {"TarnQCNEONEngine::Binning_10bit_Tetra", 2, 10, 10, false, true},
        {"TarnQCNEONEngine::Binning_10bit_Hexadeca", 4, 10, 10, false, true},
    };
    return facts[static_cast<int>(operation)];
}

inline bool IsTwelveBit(int format) {
    return format >= 10 && format <= 19;
}
inline long long CeilDiv(long long a, long long b) {
    return (a + b - 1) / b;
}
inline int GroupBytes(int bits) {
    return bits == 12 ? 3 : 5;
}
inline int GroupPixels(int bits) {
    return bits == 12 ? 2 : 4;
}
// Bytes of a row of whole groups.
inline long long RowBytes(int bits, long long pixels) {
    return CeilDiv(pixels, GroupPixels(bits)) * GroupBytes(bits);
}
// Bytes that a binning operation reads of an input row: whole groups of the cells it needs. Nona
// reads in steps of three groups, the NEON engine whole output groups' worth.
inline long long BytesRead(const Facts& facts, int outWidth) {
    if (facts.cell == 3 || facts.neonLine) {
        return CeilDiv(outWidth, 4) * 5 * facts.cell;
    }
    return RowBytes(facts.inBits, static_cast<long long>(facts.cell) * outWidth);
}
inline bool Missing(int stride, int width, int height) {
    return stride == 0 || stride == width || stride == height;
}
// As TarnQCEngine::CalcStride, the quotient in single precision.
inline int FilledPitch(int width) {
    const float quotient = static_cast<float>(width) / 64.0f;
    int units = static_cast<int>(quotient);
    if (static_cast<float>(units) < quotient) ++units;
    return static_cast<int>(static_cast<unsigned>(units) * 80u);
}
// Bytes of a buffer of rows that starts at its first row.
inline long long Extent(long long rows, long long pitch, long long rowBytes) {
    return (rows - 1) * pitch + rowBytes;
}

__attribute__((format(printf, 3, 4))) inline bool Report(TarnCall& call, TarnProblem problem,
                                                         const char* format, ...) {
    call.problem = problem;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(call.sentence, sizeof call.sentence, format, arguments);
    va_end(arguments);
    return true;
}

inline bool CheckShape(TarnCall& call, const Facts& facts, const BufferInfo& info) {
    if (info.inWidth < 1 || info.inHeight < 1 || info.outWidth < 1 || info.outHeight < 1) {
        return Report(call, TarnProblem::EmptyFrame,
                      "%dx%d to %dx%d is an empty frame; widths and heights start at 1",
                      info.inWidth, info.inHeight, info.outWidth, info.outHeight);
    }
    if (facts.neonLine && info.outWidth > 4096) {
        return Report(call, TarnProblem::WidthOverLine,
                      "an output width of %d is over the 4096 pixels of %s", info.outWidth,
                      facts.name);
    }
    if (info.outWidth > info.inWidth / facts.cell || info.outHeight > info.inHeight / facts.cell) {
        return Report(call, TarnProblem::WidthMismatch,
                      "%s makes at most %dx%d of %dx%d, not %dx%d", facts.name,
                      info.inWidth / facts.cell, info.inHeight / facts.cell, info.inWidth,
                      info.inHeight, info.outWidth, info.outHeight);
    }
    return false;
}

inline bool CheckPitch(TarnCall& call, const char* side, int given, int used, bool replaced,
                       long long rowBytes) {
    if (replaced && given != 0 && given != used) {
        return Report(call, TarnProblem::PitchReplaced,
                      "an %s pitch of %d equals a width or height and would be replaced by %d; "
                      "pass another pitch, or 0 to have it filled in",
                      side, given, used);
    }
    if (used < rowBytes) {
        return Report(call, TarnProblem::PitchTooShort,
                      "an %s pitch of %d%s is too short: a row takes %lld bytes", side, used,
                      replaced ? ", filled in," : "", rowBytes);
    }
    return false;
}

inline bool CheckSizes(TarnCall& call, long long reads, long long writes, long long srcBytes,
                       long long dstBytes) {
    call.srcBytes = reads;
    call.dstBytes = writes;
    if (srcBytes < call.srcBytes) {
        return Report(call, TarnProblem::SourceTooSmall,
                      "the source holds %lld bytes; %s reads %lld", srcBytes, call.name,
                      call.srcBytes);
    }
    if (dstBytes < call.dstBytes) {
        return Report(call, TarnProblem::DestinationTooSmall,
                      "the destination holds %lld bytes; %s writes %lld", dstBytes, call.name,
                      call.dstBytes);
    }
    return false;
}

// Exposure compensation: one pitch and one height for both buffers.
inline void CheckCompensation(TarnCall& call, const Facts& facts, const BufferInfo& info, bool qc,
                              long long srcBytes, long long dstBytes) {
    const int pitch = qc ? info.outStride : info.inStride;
    const int height = qc ? info.outHeight : info.inHeight;
    const int group = GroupBytes(facts.inBits);
    call.inStride = call.outStride = pitch;
    if (CheckShape(call, facts, info)) return;
    if (info.inStride != info.outStride) {
        Report(call, TarnProblem::PitchesDiffer,
               "pitches of %d and %d differ; %s uses %d for both buffers", info.inStride,
               info.outStride, facts.name, pitch);
        return;
    }
    if (CheckPitch(call, "input", pitch, pitch, false, RowBytes(facts.inBits, info.inWidth)))
        return;
    if (pitch % group != 0) {
        Report(
            call, TarnProblem::PitchNotWholeGroups,
            "a pitch of %d is not a multiple of %d bytes; the last %d of each row stay untouched",
            pitch, group, pitch % group);
        return;
    }
    const long long bytes = Extent(height, pitch, pitch);
    CheckSizes(call, bytes, bytes, srcBytes, dstBytes);
}

inline void CheckBinning(TarnCall& call, const Facts& facts, const BufferInfo& info, int outBits,
                         long long srcBytes, long long dstBytes) {
    const bool inFilled = facts.fillsPitches && Missing(info.inStride, info.inWidth, info.inHeight);
    const bool outFilled =
        facts.fillsPitches && Missing(info.outStride, info.outWidth, info.outHeight);
    if (inFilled) call.inStride = FilledPitch(info.inWidth);
    if (outFilled) call.outStride = FilledPitch(info.outWidth);
    if (CheckShape(call, facts, info)) return;

    const long long read = BytesRead(facts, info.outWidth);
    const long long written = facts.neonLine ? 5120 : RowBytes(outBits, info.outWidth);
    // What a row must hold is its pixels; what is read past them (Nona) may be the next row's.
    const long long inRow =
        RowBytes(facts.inBits, static_cast<long long>(facts.cell) * info.outWidth);
    if (CheckPitch(call, "input", info.inStride, call.inStride, inFilled, inRow)) return;
    if (CheckPitch(call, "output", info.outStride, call.outStride, outFilled, written)) return;
    const long long inRows = static_cast<long long>(facts.cell) * info.outHeight;
    CheckSizes(call, Extent(inRows, call.inStride, read),
               Extent(info.outHeight, call.outStride, written), srcBytes, dstBytes);
}

inline TarnOperation Choose(int option, int inFormat, int outFormat, const BufferInfo& info) {
    const bool vx = option == 1;
    if (!vx && option != 0) return TarnOperation::None;
    const bool twelve = IsTwelveBit(inFormat) && (vx || IsTwelveBit(outFormat));
    if (info.inWidth == info.outWidth) {
        if (vx) return twelve ? TarnOperation::VXEVComp12 : TarnOperation::VXEVComp10;
        return twelve ? TarnOperation::QCEVComp12 : TarnOperation::QCEVComp10;
    }
    if (info.inWidth >= 16000) return vx ? TarnOperation::VXHexadeca : TarnOperation::QCHexadeca;
    if (info.inWidth >= 12000) return vx ? TarnOperation::VXNona : TarnOperation::QCNona;
    if (vx) return twelve ? TarnOperation::VXTetra12 : TarnOperation::VXTetra10;
    return twelve ? TarnOperation::QCTetra12 : TarnOperation::QCTetra10;
}

// The operation of a family for a cell and depths; None when there is none.
inline TarnOperation Find(int option, int cell, int inBits, int outBits) {
    const int first =
        static_cast<int>(option == 1 ? TarnOperation::VXEVComp10 : TarnOperation::QCEVComp10);
    const int last =
        static_cast<int>(option == 1 ? TarnOperation::VXHexadeca : TarnOperation::QCHexadeca);
    for (int i = first; i <= last && (option == 0 || option == 1); ++i) {
        const Facts& facts = FactsOf(static_cast<TarnOperation>(i));
        const bool writes =
            facts.outBits == outBits || (facts.outBits == 0 && (outBits == 10 || outBits == 12));
        if (facts.cell == cell && facts.inBits == inBits && writes) {
            return static_cast<TarnOperation>(i);
        }
    }
    return TarnOperation::None;
}

inline void ReportNone(TarnCall& call, int option, int cell, int inBits, int outBits) {
    if (option != 0 && option != 1) {
        Report(call, TarnProblem::UnknownOption, "option %d is no family: 0 is QC, 1 is VX",
               option);
    } else if (cell < 1 || cell > 4) {
        Report(call, TarnProblem::NoOperation, "a cell has 1, 2, 3 or 4 pixels a side, not %d",
               cell);
    } else if (inBits == 12 && cell > 2) {
        Report(call, TarnProblem::NoOperation,
               "12-bit frames can be binned 2x2 only; %dx%d binning exists for 10 bits", cell,
               cell);
    } else {
        Report(call, TarnProblem::NoOperation,
               "no operation makes %d bits of %d with cell %d in the %s family; only VX frames "
               "binned 2x2 or 4x4 have a choice of 10 or 12 bits",
               outBits, inBits, cell, option == 1 ? "VX" : "QC");
    }
}

}  // namespace tarn_checked
/// @endcond

/// What calling this engine operation itself would do. srcBytes and dstBytes are the sizes of the
/// client's buffers; outFormat matters to the VX Tetra and Hexadeca operations only.
inline TarnCall TarnCheckOperation(TarnOperation operation, int outFormat, const BufferInfo& info,
                                   long long srcBytes, long long dstBytes) {
    using namespace tarn_checked;
    const Facts& facts = FactsOf(operation);
    TarnCall call = {operation, facts.name, info.inStride,     info.outStride,
                     0,         0,          TarnProblem::None, {}};
    if (operation == TarnOperation::None) return call;
    const bool qc = operation <= TarnOperation::QCHexadeca;
    if (facts.cell == 1) {
        CheckCompensation(call, facts, info, qc, srcBytes, dstBytes);
    } else {
        const int outBits = facts.outBits != 0 ? facts.outBits : outFormat == 10 ? 12 : 10;
        CheckBinning(call, facts, info, outBits, srcBytes, dstBytes);
    }
    return call;
}

/// What calling the engine itself would do: the operation of the family that makes pixels of
/// outBits of cells of cell x cell pixels of inBits (cell 1: compensation only), whatever the
/// width.
inline TarnCall TarnCheckEngine(int option, int cell, int inBits, int outBits,
                                const BufferInfo& info, long long srcBytes, long long dstBytes) {
    using namespace tarn_checked;
    const TarnOperation operation = Find(option, cell, inBits, outBits);
    TarnCall call = TarnCheckOperation(operation, outBits == 12 ? 10 : 0, info, srcBytes, dstBytes);
    if (operation == TarnOperation::None) ReportNone(call, option, cell, inBits, outBits);
    return call;
}

/// What TarnSolution::Process would do on a solution with these settings: the option given to Init
/// and the two format codes as SetParam stored them.
inline TarnCall TarnCheckProcess(int option, int inFormat, int outFormat, const BufferInfo& info,
                                 long long srcBytes, long long dstBytes) {
    using namespace tarn_checked;
    const TarnOperation operation = Choose(option, inFormat, outFormat, info);
    TarnCall call = TarnCheckOperation(operation, outFormat, info, srcBytes, dstBytes);
    const Facts& facts = FactsOf(operation);
    if (operation == TarnOperation::None) {
        Report(call, TarnProblem::UnknownOption, "option %d is no family: 0 is QC, 1 is VX",
               option);
    } else if (IsTwelveBit(inFormat) != (facts.inBits == 12)) {
        Report(
            call, TarnProblem::FormatMismatch,
            "input format %d is a %d-bit code, but these widths and codes lead to %s, which reads "
            "%d bits",
            inFormat, IsTwelveBit(inFormat) ? 12 : 10, facts.name, facts.inBits);
    } else if (facts.outBits != 0 && IsTwelveBit(outFormat) != (facts.outBits == 12)) {
        Report(call, TarnProblem::FormatMismatch,
               "output format %d is a %d-bit code, but %s writes %d bits", outFormat,
               IsTwelveBit(outFormat) ? 12 : 10, facts.name, facts.outBits);
    } else if (facts.outBits == 0 && outFormat >= 11 && outFormat <= 19) {
        Report(call, TarnProblem::FormatMismatch,
               "output format %d gives 10 bits in %s; only 10 gives 12 bits", outFormat,
               facts.name);
    }
    return call;
}

#endif  // TARN_CHECKED_H_
