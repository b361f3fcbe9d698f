#include "tools/tarn/frame_file.h"

#include <set>

#include "tools/tarn/message.h"

namespace tarn::tool {
namespace {

// Pitches by which the bytes are whole frames, each with less padding than pixels. The last row's
// padding may be missing.
std::set<int64_t> FittingPitches(int64_t bytes, const PackedFrame& frame) {
    constexpr size_t kEnough = 8;
    constexpr int64_t kMostFrames = 1'000'000;
    const int64_t rowBytes = frame.RowBytes();
    std::set<int64_t> pitches;
    const auto consider = [&](int64_t dividend, int64_t divisor) {
        if (divisor < 1 || dividend % divisor != 0) return;
        const int64_t pitch = dividend / divisor;
        if (pitch >= rowBytes && pitch < 2 * rowBytes) pitches.insert(pitch);
    };
    const int64_t mostFrames = std::min(bytes / rowBytes / frame.height, kMostFrames);
    for (int64_t frames = std::max<int64_t>(mostFrames / 2, 1);
         frames <= mostFrames && pitches.size() < kEnough; ++frames) {
        consider(bytes, frames * frame.height);
        consider(bytes - rowBytes, frames * frame.height - 1);
    }
    return pitches;
}

int64_t DerivePitch(const std::string& name, int64_t bytes, const PackedFrame& frame) {
    const std::set<int64_t> pitches = FittingPitches(bytes, frame);
    if (pitches.size() == 1) return *pitches.begin();
    if (pitches.empty()) {
        throw UserError(Text("--pitch auto: ", name, " holds ", Grouped(bytes),
                             " bytes, no whole number of ", frame.width, "x", frame.height, " ",
                             LayoutName(frame.layout), " frames at any pitch from ",
                             frame.RowBytes(), " to twice that"));
    }
    std::string list;
    for (const int64_t pitch : pitches) list += Text(list.empty() ? "" : ", ", pitch);
    throw UserError(Text("--pitch auto: ", name, " could have any pitch of ", list, "; give one"));
}

[[noreturn]] void RefuseWholeFile(const std::string& name, int64_t bytes, const FrameRun& run,
                                  int64_t frames) {
    if (frames < 2 || run.leftOver != 0) CheckFileSize(name, bytes, run.frame);
    throw UserError(Text(name, " holds ", frames, " frames of ", Describe(run.frame),
                         "; choose with --frame 0 to ", frames - 1, ", or --frame all"));
}

// Where in so many bytes the frames are; all but reading them.
FrameRun Locate(const std::string& name, int64_t bytes, const FrameSpec& spec) {
    FrameRun run{spec.frame, spec.first, 1, 0, {}};
    if (run.frame.pitch == 0) run.frame.pitch = DerivePitch(name, bytes, run.frame);
    const int64_t size = run.frame.Bytes();
    const int64_t frames = (bytes + size - run.frame.LeastBytes()) / size;
    run.leftOver = std::max<int64_t>(bytes - frames * size, 0);
    if (!spec.framesTold) {
        if (frames != 1 || run.leftOver != 0) RefuseWholeFile(name, bytes, run, frames);
        return run;
    }
    const int64_t last = spec.last < 0 ? frames - 1 : spec.last;
    if (frames == 0) CheckFileSize(name, bytes, run.frame);
    if (last >= frames) {
        throw UserError(Text("--frame: there is no frame ", last, "; ", name, " holds ", frames,
                             " of ", Describe(run.frame), ", numbered from 0"));
    }
    run.count = last - run.first + 1;
    CheckMemory(run.frame, run.count);
    return run;
}

// How far a pipe is read, whose end is not known beforehand.
int64_t PipeLimit(const FrameSpec& spec) {
    if (spec.frame.pitch == 0 || spec.last < 0) return kMostBytes;
    return std::min(spec.offset + (spec.last + 1) * spec.frame.Bytes(), kMostBytes);
}

Bytes ReadPipe(const std::string& path, const FrameSpec& spec) {
    if (spec.frame.pitch > 0) CheckMemory(spec.frame);
    const int64_t most = PipeLimit(spec);
    Bytes bytes = ReadFile(path, most);
    if (int64_t(bytes.size()) <= most) return bytes;
    if (spec.framesTold && most < kMostBytes) {  // what follows them was not asked for
        bytes.pop_back();
        return bytes;
    }
    throw UserError(Text(InputName(path), " holds more than the ", Grouped(most), " bytes of ",
                         most == kMostBytes ? "what is handled at once" : Describe(spec.frame)));
}

}  // namespace

FrameRun ReadFrames(const std::string& path, const FrameSpec& spec) {
    std::string name = InputName(path);
    int64_t size = FileSize(path);
    const bool pipe = size < 0;
    Bytes bytes;
    if (pipe) {
        bytes = ReadPipe(path, spec);
        size = static_cast<int64_t>(bytes.size());
    }
    if (spec.offset > 0) name += Text(" after --offset ", spec.offset);
    FrameRun run = Locate(name, std::max<int64_t>(size - spec.offset, 0), spec);
    CheckMemory(run.frame);
    const int64_t begin = spec.offset + run.first * run.frame.Bytes();
    const int64_t length = std::min(run.count * run.frame.Bytes(), size - begin);
    if (pipe) {
        bytes.erase(bytes.begin(), bytes.begin() + begin);
        bytes.resize(static_cast<size_t>(length));
    } else {
        bytes = ReadFile(path, length, begin);
        bytes.resize(std::min(bytes.size(), static_cast<size_t>(length)));
    }
    if (int64_t(bytes.size()) < length)
        throw RunError(Text(name, ": became shorter while it was read"));
    run.bytes = std::move(bytes);
    return run;
}

void SayLeftOver(const FrameRun& run, bool quiet) {
    if (run.leftOver == 0) return;
    Say(quiet, "note: ", Grouped(run.leftOver), " bytes after the last whole frame are left out");
}

}  // namespace tarn::tool
