#include "props/props_heap.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/byte_order.h"
#include "platform/platform.h"
#include "props/diagnostics.h"

namespace deimg {
namespace {

constexpr std::uint32_t kMagic = 0xBAB0ACBB;
constexpr std::uint32_t kStructureSize = 20;
constexpr int kDeepestSubHeap = 16;            // levels below the block
constexpr std::uint32_t kMostEntries = 65536;  // looked at in the search of one property

bool Valid(const PropsHeap* heap) {
  return heap != nullptr && heap->magic == kMagic && heap->structureSize == kStructureSize;
}

void* complibAllocMemory(std::size_t bytes) { return platform::HeapAllocate(bytes, false); }

Result complibFreeMemory(void* memory) {
  if (platform::HeapRelease(memory)) return kPropsOk;
  ReportMessage("COMPL", 2, "HeapFree () failed.");
  return kPropsHeapRefused;
}

/// Copies a record into its slot by its type.
void CopyRecord(const PropsHeap& heap, std::uint16_t type, const std::uint8_t* source,
                std::uint32_t bytes, std::uint8_t* slot) {
  switch (type) {
    case entry::kTypeBytes:
    case entry::kTypeText:
      std::memcpy(slot, source, bytes);
      break;
    case entry::kType16:
      for (std::uint32_t i = 0; i + 2 <= bytes; i += 2) {
        const std::uint16_t value = LoadU16(source + i, heap.bigEndian);
        std::memcpy(slot + i, &value, sizeof(value));
      }
      break;
    case entry::kType32:
      for (std::uint32_t i = 0; i + 4 <= bytes; i += 4) {
        const std::uint32_t value = LoadU32(source + i, heap.bigEndian);
        std::memcpy(slot + i, &value, sizeof(value));
      }
      break;
    default:
      std::memset(slot, 0xFF, 4);
  }
}

/// The search for one property.
class Search {
 public:
  Search(std::uint16_t tag, void* destination, std::size_t slotSize)
      : tag_(tag), slot_(static_cast<std::uint8_t*>(destination)), slotSize_(slotSize) {}

  Result In(const PropsHeap* heap, int depth) {
    if (!Valid(heap)) return kPropsInvalidHandle;
    if (heap->size < 6 || depth > kDeepestSubHeap) return kPropsUnreadable;
    const std::uint32_t directory = LoadU32(heap->data + heap->size - 4, heap->bigEndian);
    if (directory > heap->size - 6) return kPropsUnreadable;
    const std::uint32_t count = LoadU16(heap->data + directory, heap->bigEndian);
    if (count * entry::kBytes > heap->size - 4 - directory - 2) return kPropsUnreadable;
    const std::uint8_t* at = heap->data + directory + 2;
    for (std::uint32_t i = 0; i < count; ++i, at += entry::kBytes) {
      const Result result = Look(*heap, at, depth);
      if (result != kPropsNotFound) return result;
    }
    return kPropsNotFound;
  }

 private:
  Result Look(const PropsHeap& heap, const std::uint8_t* at, int depth) {
    if (++entriesSeen_ > kMostEntries) return kPropsUnreadable;
    const std::uint16_t tag = LoadU16(at, heap.bigEndian);
    const std::uint32_t size = LoadU32(at + 2, heap.bigEndian);
    const std::uint32_t offset = LoadU32(at + 6, heap.bigEndian);
    const bool inside = offset <= heap.size && size <= heap.size - offset;
    if (entry::IsSubHeap(tag)) {
      if (!inside) return kPropsUnreadable;
      const PropsHandle sub(pxfPsPropsProlog(heap.bigEndian, heap.data + offset, size));
      if (sub.get() == nullptr) return COMPLIB_STG_E_INSUFFICIENTMEMORY;
      return In(sub.get(), depth + 1);
    }
    if (tag != tag_) return kPropsNotFound;
    const std::uint16_t type = tag & entry::kTypeMask;
    if ((tag & entry::kLocationMask) == entry::kInEntry) {
      CopyRecord(heap, type, at + 2, Cut(8), slot_);
      return kPropsOk;
    }
    if (!inside) return kPropsUnreadable;
    CopyRecord(heap, type, heap.data + offset, Cut(size), slot_);
    return kPropsOk;
  }

  std::uint32_t Cut(std::uint32_t size) const {
    return static_cast<std::uint32_t>(std::min<std::size_t>(size, slotSize_));
  }

  const std::uint16_t tag_;
  std::uint8_t* const slot_;
  const std::size_t slotSize_;
  std::uint32_t entriesSeen_ = 0;
};

}  // namespace

PropsHandle::PropsHandle(PropsHandle&& other) noexcept
    : heap_(std::exchange(other.heap_, nullptr)) {}

PropsHandle& PropsHandle::operator=(PropsHandle&& other) noexcept {
  std::swap(heap_, other.heap_);
  return *this;
}

PropsHandle::~PropsHandle() {
  if (heap_ != nullptr) Close();
}

Result PropsHandle::Close() {
  PropsHeap* const heap = std::exchange(heap_, nullptr);
  return Valid(heap) ? complibFreeMemory(heap) : Result{kPropsInvalidHandle};
}

PropsHeap* pxfPsPropsProlog(bool bigEndian, const std::uint8_t* data, std::uint32_t size) {
  auto* const heap = static_cast<PropsHeap*>(complibAllocMemory(sizeof(PropsHeap)));
  if (heap == nullptr) {
    Print("::pxfPsPropsProlog:complibAllocMemory () failed.");
    return nullptr;
  }
  *heap = {kMagic, kStructureSize, bigEndian, data, size};
  return heap;
}

Result pxfPsReadOpenImagePropsFromMemory(const std::uint8_t* data, bool bigEndian,
                                         std::uint32_t size, PropsHandle* handle) {
  if (handle == nullptr) return kPropsInvalidHandle;
  *handle = PropsHandle(pxfPsPropsProlog(bigEndian, data, size));
  if (handle->get() != nullptr) return kPropsOk;
  Print(
      "pxfPsReadOpenImagePropsFromMemory:pxfPsPropsProlog () failed. "
      "[COMPLIB_STG_E_INSUFFICIENTMEMORY]");
  return COMPLIB_STG_E_INSUFFICIENTMEMORY;
}

Result PropsRead(const PropsHeap* heap, std::uint16_t tag, void* destination,
                 std::size_t slotSize) {
  return Search(tag, destination, slotSize).In(heap, 0);
}

}  // namespace deimg
