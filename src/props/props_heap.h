/// A property heap in memory: records found through a directory at the heap's end.
#ifndef DEIMG_PROPS_PROPS_HEAP_H
#define DEIMG_PROPS_PROPS_HEAP_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/result.h"

namespace deimg {

/// Codes of the property library; the job maps all of them to DEIMG_PROPS_UNREADABLE.
enum PropsResult : Result {
  kPropsOk = 0,
  kPropsHeapRefused = 0x02290000,  // a handle could not be given back
  COMPLIB_STG_E_INSUFFICIENTMEMORY = 0x02290008,
  kPropsInvalidHandle = 0x02290009,
  kPropsNotFound = 0x02290300,
  kPropsUnreadable = 0x02290301,  // a directory or record leaves its heap, or nesting is too deep
};

/// A directory entry: tag, size and offset, or tag and eight bytes of data.
namespace entry {
inline constexpr std::uint32_t kBytes = 10;
inline constexpr std::uint16_t kLocationMask = 0xC000;
inline constexpr std::uint16_t kInHeap = 0x0000;
inline constexpr std::uint16_t kInEntry = 0x4000;
inline constexpr std::uint16_t kTypeMask = 0x3800;
inline constexpr std::uint16_t kTypeBytes = 0x0000;
inline constexpr std::uint16_t kTypeText = 0x0800;
inline constexpr std::uint16_t kType16 = 0x1000;
inline constexpr std::uint16_t kType32 = 0x1800;

/// Whether the record is a heap of its own.
constexpr bool IsSubHeap(std::uint16_t tag) {
  const std::uint16_t type = tag & kTypeMask;
  return (tag & kLocationMask) == kInHeap && (type == 0x2000 || type == 0x2800 || type == 0x3000);
}
}  // namespace entry

/// Handle on a heap; lives in the process heap.
struct PropsHeap {
  std::uint32_t magic;
  std::uint32_t structureSize;
  std::uint32_t bigEndian;  // 1 or 0
  const std::uint8_t* data;
  std::uint32_t size;
};
static_assert(sizeof(void*) != 4 || sizeof(PropsHeap) == 20);

/// Sole owner of a handle.
class PropsHandle {
 public:
  PropsHandle() = default;
  explicit PropsHandle(PropsHeap* heap) : heap_(heap) {}
  PropsHandle(PropsHandle&& other) noexcept;
  PropsHandle& operator=(PropsHandle&& other) noexcept;
  PropsHandle(const PropsHandle&) = delete;
  PropsHandle& operator=(const PropsHandle&) = delete;
  ~PropsHandle();

  PropsHeap* get() const { return heap_; }

  /// Gives the handle back to the process heap; a refusal is reported to the user.
  Result Close();

 private:
  PropsHeap* heap_ = nullptr;
};

/// Makes a handle on `size` bytes at `data`; null when the process heap is exhausted.
[[nodiscard]] PropsHeap* pxfPsPropsProlog(bool bigEndian, const std::uint8_t* data,
                                          std::uint32_t size);

/// Opens a heap on a block in memory.
[[nodiscard]] Result pxfPsReadOpenImagePropsFromMemory(const std::uint8_t* data, bool bigEndian,
                                                       std::uint32_t size, PropsHandle* handle);

/// A property that is looked for, and where it goes.
struct PropsSlot {
  std::uint16_t tag;
  std::uint8_t* destination;
  std::size_t size;
  bool filled = false;
};

/// Finds the first property of each tag, descending into sub-heaps in directory order, and copies
/// it to its slot in the machine's byte order, cut to the slot. One walk serves all slots.
///
/// @return 0 when every slot is filled. kPropsUnreadable when the walk met, before that, a sub-heap
///         or record that leaves its heap, too many entries or too deep a heap; else
///         kPropsNotFound, or COMPLIB_STG_E_INSUFFICIENTMEMORY when a sub-heap was passed over for
///         want of memory.
[[nodiscard]] Result PropsRead(const PropsHeap* heap, std::span<PropsSlot> slots);

}  // namespace deimg

#endif  // DEIMG_PROPS_PROPS_HEAP_H
