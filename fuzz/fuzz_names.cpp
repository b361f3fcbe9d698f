// What users and files write as text: layout names, numbers, sizes, pitches, colour orders, file
// kinds, the names of dumps. Whatever it is, it is refused as the user's error or keeps its
// promise.
#include <fuzzer/FuzzedDataProvider.h>

#include <climits>
#include <cstdlib>

#include "frames/formats.h"
#include "frames/geometry.h"
#include "frames/guess.h"
#include "frames/message.h"
#include "frames/picture.h"
#include "tools/tarn/cli/file_kind.h"
#include "tools/tarn/cli/parse.h"

namespace {

using namespace tarn::tool;

void Require(bool kept) {
    if (!kept) std::abort();
}

void FuzzFormat(const std::string& text) {
    const NamedFormat format = FindFormat("-f", text);
    Require(text.ends_with(format.name));
    if (!format.colours.empty()) CheckColourOrder("--cfa", format.colours);
}

void FuzzNumber(const std::string& text) {
    const int64_t number = ParseNumber("-n", text, -1000, 1000);
    Require(number >= -1000 && number <= 1000 && std::strtoll(text.c_str(), nullptr, 10) == number);
}

void FuzzGeometry(const std::string& text, FuzzedDataProvider& data) {
    const Size size = ParseSize("-s", text);
    Require(size.width > 0 && size.height > 0);
    PackedFrame frame{data.PickValueInArray({tarn::Layout::QCRaw10, tarn::Layout::QCRaw12,
                                             tarn::Layout::VXRaw10, tarn::Layout::VXRaw12}),
                      size.width, size.height, 0};
    SetPitch("--pitch", data.ConsumeRandomLengthString(12), &frame);
    Require(frame.pitch >= frame.RowBytes() && frame.pitch < INT_MAX);
    Require(frame.LeastBytes() > 0 && frame.Bytes() >= frame.LeastBytes());
    CheckMemory(frame, 2);
    Require(frame.Bytes() <= kMostBytes / 2);
    const auto bytes = data.ConsumeIntegral<uint32_t>();
    CheckFileSize("frame", bytes, frame);
    Require(bytes >= frame.LeastBytes() && bytes <= frame.Bytes());
}

void FuzzDumpName(const std::string& text, FuzzedDataProvider& data) {
    const int64_t bytes = data.ConsumeIntegralInRange<int64_t>(-1, 1 << 20);
    const Known known = KnownFromName(text, bytes);
    Require(known.pitch.has_value() == known.height.has_value());
    if (known.pitch) Require(*known.pitch > 0 && *known.pitch * *known.height == bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    const int kind = data.ConsumeIntegralInRange(0, 5);
    const std::string text = data.ConsumeRandomLengthString(80);
    try {
        switch (kind) {
            case 0: FuzzFormat(text); break;
            case 1: FuzzNumber(text); break;
            case 2: FuzzGeometry(text, data); break;
            case 3: FuzzDumpName(text, data); break;
            case 4: CheckColourOrder("--cfa", text); break;
            case 5: ParseFileKind(data.ConsumeRandomLengthString(4), text); break;
        }
    } catch (const UserError&) {
    }
    return 0;
}
