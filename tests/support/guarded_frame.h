// Frames between protected pages: one byte read or written outside them is a crash or a failure.
#ifndef TARN_TESTS_SUPPORT_GUARDED_FRAME_H_
#define TARN_TESTS_SUPPORT_GUARDED_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "reference/operation.h"

namespace tarn_test {

// Memory for one frame at a time, reused from case to case. With one slot all rows lie together
// (any pitch); with several each row lies in a slot of its own, so that both ends of every row can
// touch a protected page.
class GuardedFrame {
 public:
    enum class Access { ReadOnly, Writable };
    enum class Edge { Begin, End };

    GuardedFrame(Access access, size_t slots, size_t slotBytes);
    ~GuardedFrame();  // a byte changed outside the frames that lay here fails the test
    GuardedFrame(const GuardedFrame&) = delete;
    GuardedFrame& operator=(const GuardedFrame&) = delete;

    // From slot to slot: the pitch of frames whose rows lie apart.
    ptrdiff_t SlotPitch() const { return static_cast<ptrdiff_t>(slotBytes_ + pageBytes_); }

    // Lays the extent `distance` bytes from a protected page and returns its row 0.
    uint8_t* Place(const tarn_reference::Extent& extent, Edge edge, size_t distance = 0);

    // The same row 0 for the test's own hand, writable in any case.
    uint8_t* Own(const uint8_t* placed) const { return own_ + (placed - user_); }

    // The bytes from the lowest to the highest of the extent last placed (rows together).
    std::vector<uint8_t> Content() const;
    void SetContent(const std::vector<uint8_t>& content);
    ptrdiff_t RowZeroInContent() const { return rowZero_; }

    // Empty when the content is as expected and nothing near it was touched.
    std::string Difference(const std::vector<uint8_t>& expected) const;

    // Wipes what was written to the extent last placed.
    void Clear();

 private:
    uint8_t* Slot(uint8_t* view, size_t slot) const {
        return view + pageBytes_ + slot * static_cast<size_t>(SlotPitch());
    }

    size_t pageBytes_, slots_, slotBytes_, totalBytes_;
    uint8_t* own_;   // all of it, writable
    uint8_t* user_;  // what the library gets: slots alone, with the access asked for
    bool checked_;
    size_t low_ = 0, bytes_ = 0, usedSlots_ = 0;  // of the extent last placed, within its slots
    ptrdiff_t rowZero_ = 0;
};

}  // namespace tarn_test

#endif  // TARN_TESTS_SUPPORT_GUARDED_FRAME_H_
