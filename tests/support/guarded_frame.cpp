#include "tests/support/guarded_frame.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace tarn_test {
namespace {

constexpr uint8_t kCanary = 0xA5;
constexpr size_t kNear = 192;  // bytes beside a frame that every case checks

uint8_t* Map(int file, size_t bytes, int protection) {
    void* view = mmap(nullptr, bytes, protection, MAP_SHARED, file, 0);
    if (view == MAP_FAILED) throw std::runtime_error("mmap");
    return static_cast<uint8_t*>(view);
}

bool AllCanary(const uint8_t* first, const uint8_t* last) {
    return std::all_of(first, last, [](uint8_t byte) { return byte == kCanary; });
}

}  // namespace

GuardedFrame::GuardedFrame(Access access, size_t slots, size_t slotBytes)
    : pageBytes_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
      slots_(slots),
      slotBytes_((slotBytes + pageBytes_ - 1) / pageBytes_ * pageBytes_),
      totalBytes_(pageBytes_ + slots * (slotBytes_ + pageBytes_)),
      checked_(access == Access::Writable) {
    // One file mapped twice: the test fills frames that the library can only read, and no case
    // costs a system call.
    const int file = memfd_create("guarded_frame", 0);
    if (file < 0 || ftruncate(file, static_cast<off_t>(totalBytes_)) != 0) {
        throw std::runtime_error("memfd");
    }
    own_ = Map(file, totalBytes_, PROT_READ | PROT_WRITE);
    user_ = Map(file, totalBytes_, PROT_NONE);
    close(file);
    for (size_t slot = 0; slot < slots_; ++slot) {
        mprotect(Slot(user_, slot), slotBytes_, checked_ ? PROT_READ | PROT_WRITE : PROT_READ);
        std::memset(Slot(own_, slot), kCanary, slotBytes_);
    }
}

GuardedFrame::~GuardedFrame() {
    Clear();
    for (size_t slot = 0; checked_ && slot < slots_; ++slot) {
        EXPECT_TRUE(AllCanary(Slot(own_, slot), Slot(own_, slot) + slotBytes_))
            << "a write far from any frame";
    }
    munmap(own_, totalBytes_);
    munmap(user_, totalBytes_);
}

uint8_t* GuardedFrame::Place(const tarn_reference::Extent& extent, Edge edge, size_t distance) {
    const bool apart = slots_ > 1;
    const int64_t reach = apart || extent.rows < 1 ? 0 : extent.pitch * (extent.rows - 1);
    rowZero_ = static_cast<ptrdiff_t>(std::max<int64_t>(-reach, 0));
    bytes_ = static_cast<size_t>(std::abs(reach) + extent.bytes);
    usedSlots_ = apart ? static_cast<size_t>(extent.rows) : 1;
    if (bytes_ + distance > slotBytes_ || usedSlots_ > slots_) throw std::length_error("slot");
    low_ = edge == Edge::Begin ? distance : slotBytes_ - distance - bytes_;
    return Slot(user_, 0) + low_ + rowZero_;
}

std::vector<uint8_t> GuardedFrame::Content() const {
    const uint8_t* first = Slot(own_, 0) + low_;
    return {first, first + bytes_};
}

void GuardedFrame::SetContent(const std::vector<uint8_t>& content) {
    std::copy_n(content.begin(), bytes_, Slot(own_, 0) + low_);
}

std::string GuardedFrame::Difference(const std::vector<uint8_t>& expected) const {
    for (size_t slot = 0; slot < usedSlots_; ++slot) {
        const uint8_t* begin = Slot(own_, slot);
        const uint8_t* first = begin + low_;
        const auto [got, want] = std::mismatch(first, first + bytes_, expected.begin());
        if (got != first + bytes_) {
            return "byte " + std::to_string(got - first - rowZero_) + " is " +
                   std::to_string(*got) + ", not " + std::to_string(*want);
        }
        if (!AllCanary(first - std::min(low_, kNear), first)) return "a write before the frame";
        const uint8_t* last = first + bytes_;
        if (!AllCanary(last, std::min(last + kNear, begin + slotBytes_))) {
            return "a write after the frame";
        }
    }
    return {};
}

void GuardedFrame::Clear() {
    for (size_t slot = 0; slot < usedSlots_; ++slot) {
        std::memset(Slot(own_, slot) + low_, kCanary, bytes_);
    }
}

}  // namespace tarn_test
