#include "pictures/frame_file.h"

#include <algorithm>
#include <set>

#include "frames/geometry.h"
#include "frames/message.h"

namespace tarn::pictures {
namespace {

// Pitches by which the bytes are whole frames, each with less padding than pixels. The last row's
// padding may be missing.
std::set<int64_t> FittingPitches(int64_t bytes, const PackedFrame& frame) {
    constexpr size_t kEnough = 8;
    constexpr int64_t kMostFrames = 1'000'000;
    const int64_t rowBytes = frame.RowBytes();
    std::set<int64_t> pitches;
    const int64_t longest = std::min(2 * rowBytes - 1, kLongestPitch);
    const auto consider = [&](int64_t dividend, int64_t divisor) {
        if (divisor < 1 || dividend % divisor != 0) return;
        const int64_t pitch = dividend / divisor;
        if (pitch >= rowBytes && pitch <= longest) pitches.insert(pitch);
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

// Where in so many bytes the frames are; all but reading them.
void Locate(const std::string& name, int64_t bytes, const FrameSpec& spec, FrameRun* run) {
    if (run->frame.pitch == 0) run->frame.pitch = DerivePitch(name, bytes, run->frame);
    const PackedFrame& frame = run->frame;
    const int64_t size = frame.Bytes();
    const int64_t frames = (bytes + size - frame.LeastBytes()) / size;
    run->leftOver = std::max<int64_t>(bytes - frames * size, 0);
    if (frames == 0) CheckFileSize(name, bytes, frame);
    if (!spec.frames.told && (frames != 1 || run->leftOver != 0)) {
        if (frames < 2 || run->leftOver != 0) CheckFileSize(name, bytes, frame);
        throw UserError(Text(name, " holds ", frames, " frames of ", Describe(frame),
                             "; choose with --frame 0 to ", frames - 1, ", or --frame all"));
    }
    const int64_t last = spec.frames.last < 0 ? frames - 1 : spec.frames.last;
    if (last >= frames) {
        throw UserError(Text("--frame: there is no frame ", last, "; ", name, " holds ", frames,
                             " of ", Describe(frame), ", numbered from 0"));
    }
    run->count = last - run->first + 1;
    run->begin = spec.offset + run->first * size;
    run->length = std::min(run->count * size, bytes - run->first * size);
}

// How far a pipe is read, whose end is not known beforehand.
int64_t PipeLimit(const FrameSpec& spec) {
    if (spec.frame.pitch == 0 || spec.frames.last < 0) return kMostBytes;
    if (spec.offset > kMostBytes || spec.frames.last >= kMostBytes / spec.frame.Bytes()) {
        return kMostBytes;
    }
    return std::min(spec.offset + (spec.frames.last + 1) * spec.frame.Bytes(), kMostBytes);
}

Bytes ReadPipe(const std::string& path, const FrameSpec& spec) {
    if (spec.frame.pitch > 0) CheckMemory(spec.frame);
    const int64_t most = PipeLimit(spec);
    Bytes bytes = ReadFile(path, most);
    if (int64_t(bytes.size()) <= most) return bytes;
    if (spec.frames.told && most < kMostBytes) {  // what follows them was not asked for
        bytes.pop_back();
        return bytes;
    }
    throw UserError(Text(InputName(path), " holds more than the ", Grouped(most), " bytes of ",
                         most == kMostBytes ? "what is handled at once" : Describe(spec.frame)));
}

}  // namespace

FrameRun FindFrames(const std::string& path, const FrameSpec& spec) {
    FrameRun run{path, spec.frame, spec.frames.first, 1, 0, 0, 0, {}};
    int64_t size = FileSize(path);
    const bool pipe = size < 0;
    if (pipe) {
        run.bytes = ReadPipe(path, spec);
        size = static_cast<int64_t>(run.bytes.size());
    }
    Locate(InputName(path, spec.offset), std::max<int64_t>(size - spec.offset, 0), spec, &run);
    CheckMemory(run.frame);
    if (pipe) {
        run.bytes.erase(run.bytes.begin(), run.bytes.begin() + run.begin);
        run.bytes.resize(static_cast<size_t>(run.length));
    }
    return run;
}

FrameRun ReadFrames(const std::string& path, const FrameSpec& spec) {
    FrameRun run = FindFrames(path, spec);
    if (!run.bytes.empty()) return run;
    CheckMemory(run.frame, run.count);
    run.bytes.resize(static_cast<size_t>(run.length));
    InputFile(path).ReadWholeAt(run.begin, run.bytes);
    return run;
}

bool FramePipe::Serves(const std::string& path, const FrameSpec& spec) {
    return spec.frame.pitch > 0 && FileSize(path) < 0;
}

FramePipe::FramePipe(const std::string& path, const FrameSpec& spec)
    : file_(path), spec_(spec), run_{path, spec.frame, spec.frames.first, -1, 0, 0, 0, {}} {
    CheckMemory(spec.frame);
    if (spec.frames.last >= 0) run_.count = spec.frames.last - spec.frames.first + 1;
}

void FramePipe::Skip(int64_t bytes) {
    Bytes skipped(static_cast<size_t>(std::min<int64_t>(bytes, int64_t{1} << 20)));
    while (bytes > 0) {
        const auto step = std::min<int64_t>(bytes, int64_t(skipped.size()));
        if (file_.Read({skipped.data(), size_t(step)}) < step) return;
        bytes -= step;
    }
}

// What follows the one frame shows that it is not what was meant.
void FramePipe::ExpectEnd() {
    uint8_t more;
    if (file_.Read({&more, 1}) == 0) return;
    throw UserError(Text(InputName(run_.path), " holds more than the ", Grouped(run_.frame.Bytes()),
                         " bytes of ", Describe(run_.frame)));
}

bool FramePipe::Next(std::span<uint8_t> frame) {
    if (ended_ || next_ == run_.count) return false;
    const std::string name = InputName(run_.path, spec_.offset);
    if (next_ == 0) Skip(spec_.offset + run_.first * run_.frame.Bytes());
    const int64_t got = file_.Read(frame.first(size_t(run_.frame.Bytes())));
    if (got < run_.frame.LeastBytes()) {
        ended_ = true;
        if (run_.count < 0 && next_ > 0) {
            run_.leftOver = got;
            return false;
        }
        if (!spec_.frames.told) CheckFileSize(name, got, run_.frame);
        throw UserError(Text("--frame: there is no frame ", run_.first + next_, "; ", name,
                             " ends ", got > 0 ? "within" : "before", " it"));
    }
    ++next_;
    if (!spec_.frames.told) ExpectEnd();
    return true;
}

}  // namespace tarn::pictures
