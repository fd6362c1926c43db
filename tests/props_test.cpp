// The property heap, the fourteen properties and the diagnostics.
#include <gtest/gtest.h>

#include <cstring>

#include "props/diagnostics.h"
#include "props/image_props.h"
#include "props/props_heap.h"
#include "rawfile/property_set.h"
#include "rawfile/random_camera.h"
#include "support/fault_heap.h"
#include "support/streams.h"

namespace deimg {
namespace {

using rawfile::ByteOrder;
using rawfile::Bytes;
using rawfile::Heap;

Result ReadOne(const PropsHeap* heap, std::uint16_t tag, void* slot, std::size_t size) {
  PropsSlot wanted[] = {{tag, static_cast<std::uint8_t*>(slot), size}};
  return PropsRead(heap, wanted);
}

/// Reads one property of a heap into a slot prefilled with 0xEE.
Result ReadFrom(const Heap& heap, std::uint16_t tag, std::vector<std::uint8_t>& slot) {
  const Bytes bytes = heap.Serialize(ByteOrder::kLittle);
  PropsHandle handle;
  EXPECT_EQ(pxfPsReadOpenImagePropsFromMemory(bytes.data(), false,
                                              static_cast<std::uint32_t>(bytes.size()), &handle),
            kPropsOk);
  return ReadOne(handle.get(), tag, slot.data(), slot.size());
}

TEST(PropsHeap, FindsDepthFirstInDirectoryOrder) {
  Heap heap;
  heap.SubHeap(0x3001).SubHeap(0x2802).Add(0x0801, {'d', 'e', 'e', 'p'});
  heap.Add(0x0801, {'f', 'l', 'a', 't'});
  std::vector<std::uint8_t> slot(4, 0xEE);
  EXPECT_EQ(ReadFrom(heap, 0x0801, slot), kPropsOk);
  EXPECT_EQ(std::memcmp(slot.data(), "deep", 4), 0);
  EXPECT_EQ(ReadFrom(heap, 0x0802, slot), kPropsNotFound);
  EXPECT_EQ(ReadFrom(heap, 0x3001, slot), kPropsNotFound);  // a sub-heap is never a property
}

TEST(PropsHeap, RefusesWhatLeavesIt) {
  Heap heap;
  heap.Add(0x0801, {'a', 'b', 'c', 'd'});
  heap.SubHeap(0x3001).Add(0x0802, {'x'});
  const Bytes good = heap.Serialize(ByteOrder::kLittle);
  const auto search = [&](const Bytes& bytes, std::uint16_t tag) {
    PropsHandle handle(
        pxfPsPropsProlog(false, bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    char slot[4];
    return ReadOne(handle.get(), tag, slot, sizeof(slot));
  };
  ASSERT_EQ(search(good, 0x0801), kPropsOk);
  const std::size_t directory = rawfile::Bytes::size_type{good[good.size() - 4]};
  for (const std::size_t byte : {directory + 2 + 5, directory + 2 + 9}) {  // size, offset
    Bytes bad = good;
    bad[byte] = 0x7F;
    EXPECT_EQ(search(bad, 0x0801), kPropsUnreadable) << byte;
    EXPECT_EQ(search(bad, 0x0802), kPropsOk) << "only the record that is wanted counts";
    bad[byte + 10] = 0x7F;
    EXPECT_EQ(search(bad, 0x0802), kPropsUnreadable) << "a sub-heap on the way does";
  }
  Bytes manyEntries = good;
  manyEntries[directory + 1] = 1;
  EXPECT_EQ(search(manyEntries, 0x0801), kPropsUnreadable);
  EXPECT_EQ(ReadOne(nullptr, 0x0801, nullptr, 0), kPropsInvalidHandle);

  // Count, entries and data may lie over the offset of the directory, as long as they are inside.
  EXPECT_EQ(search({0, 0, 0, 0}, 0x0801), kPropsNotFound);
  EXPECT_EQ(search({0, 0, 0, 0, 0}, 0x0801), kPropsNotFound);
  EXPECT_EQ(search({2, 0, 0, 0}, 0x0801), kPropsNotFound) << "a count of 0 at 2";
  EXPECT_EQ(search({3, 0, 0, 0}, 0x0801), kPropsUnreadable);
  EXPECT_EQ(search({0, 0, 0}, 0x0801), kPropsUnreadable);
  const Bytes overlapping = {9, 9, 9, 1, 0, 1, 8, 4, 0, 0, 0, 3, 0, 0, 0};  // its offset is its end
  EXPECT_EQ(search(overlapping, 0x0801), kPropsOk);
  Bytes leaving = overlapping;
  leaving.front() = 0;
  leaving.insert(leaving.end() - 4, 0);
  leaving[12] = 4;  // the directory a byte further down: its entry ends behind the heap
  leaving.pop_back();
  EXPECT_EQ(search(leaving, 0x0801), kPropsUnreadable);

  Heap deep;
  Heap* inner = &deep;
  for (int level = 1; level <= 16; ++level) inner = &inner->SubHeap(0x3001);
  inner->Add(0x0801, {'a'});
  EXPECT_EQ(search(deep.Serialize(ByteOrder::kLittle), 0x0801), kPropsOk);
  inner->SubHeap(0x3002);
  inner->Add(0x0803, {'a'});
  EXPECT_EQ(search(deep.Serialize(ByteOrder::kLittle), 0x0803), kPropsUnreadable);
}

TEST(PropsHeap, PassesOverASubHeapForWantOfMemory) {
  Heap heap;
  heap.SubHeap(0x3001).Add(0x0801, {'a'});
  heap.Add(0x0802, {'b'});
  const Bytes bytes = heap.Serialize(ByteOrder::kLittle);
  const PropsHandle handle(
      pxfPsPropsProlog(false, bytes.data(), static_cast<std::uint32_t>(bytes.size())));
  ::testing::internal::CaptureStdout();
  char slot[1];
  const testing::FaultScope faults({.failAt = 1, .andAllAfter = true});
  EXPECT_EQ(ReadOne(handle.get(), 0x0802, slot, 1), kPropsOk);
  EXPECT_EQ(ReadOne(handle.get(), 0x0801, slot, 1), COMPLIB_STG_E_INSUFFICIENTMEMORY);
  std::fflush(stdout);
  ::testing::internal::GetCapturedStdout();
}

Result ReadProps(Bytes file, ImageProps& props) {
  testing::InputStream input(std::move(file));
  ImagePropsBlock block;
  DEIMG_RETURN_IF_FAILED(ReadImagePropsBlock(*input.get(), block));
  return pxfPsReadOpenImageProps(block, props);
}

TEST(ImageProps, AllFourteenAreNeeded) {
  for (const std::uint16_t tag : rawfile::kPropertyTags) {
    rawfile::RawFile file = rawfile::RandomCamera(7);
    file.properties.omitted = {tag};
    file.properties.extras.clear();
    ImageProps props{};
    EXPECT_EQ(ReadProps(Serialize(file), props), DEIMG_PROPS_UNREADABLE) << tag;
  }
}

TEST(ImageProps, ChecksHeaderAndDirectory) {
  const auto put32 = [](Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
      bytes[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> 8 * i);
  };
  Bytes file(26 + 40, 0);
  file[0] = file[1] = 'I';
  put32(file, 2, 26);
  ImageProps props{};
  EXPECT_EQ(ReadProps(file, props), DEIMG_PROPS_UNREADABLE);  // no image property block
  EXPECT_EQ(ReadProps(Bytes(25, 'I'), props), DEIMG_PROPS_UNREADABLE);
  Bytes bad = file;
  bad[1] = 'M';
  EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_UNREADABLE);
  for (const std::uint32_t headerLength : {25u, 61u, 67u, 0xFFFFFFFFu}) {
    bad = file;
    put32(bad, 2, headerLength);
    EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_UNREADABLE) << headerLength;
  }
  bad = file;
  put32(bad, 62, 35);  // the directory may start at 34 at the latest
  EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_UNREADABLE);
  // The last entry may end the file, its offset being the directory's, and no further.
  for (const std::uint32_t directory : {18u, 19u, 28u, 29u}) {
    const std::size_t at = 26 + directory;
    bad.assign(at + 12, 0);
    std::copy_n(file.begin(), 26, bad.begin());
    bad[at] = directory % 10 == 8 ? 1 : 2;
    put32(bad, at + 8, directory);
    // The block, if any, is found: what is refused then is that nothing is in it.
    EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_UNREADABLE);
    testing::InputStream input(bad);
    ImagePropsBlock block;
    EXPECT_EQ(ReadImagePropsBlock(*input.get(), block),
              directory % 10 == 8 ? Result{DEIMG_OK} : Result{DEIMG_PROPS_UNREADABLE});
  }
  // Too many entries: the size of the directory is looked at before its place.
  bad = file;
  bad[26] = 3277 & 0xFF;
  bad[27] = 3277 >> 8;
  EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_DIRECTORY_TOO_LARGE);
  bad[26] = 3276 & 0xFF;
  EXPECT_EQ(ReadProps(bad, props), DEIMG_PROPS_UNREADABLE);
}

TEST(Diagnostics, HandleAllocationFailureIsPrinted) {
  ImagePropsBlock block;
  block.blockData = BlockOf<std::uint8_t>::Zeroed(16);
  block.blockSize = 16;
  ImageProps props{};
  ::testing::internal::CaptureStdout();
  {
    const testing::FaultScope faults({.failAt = 1});
    EXPECT_EQ(pxfPsReadOpenImageProps(block, props), DEIMG_PROPS_UNREADABLE);
  }
  std::fflush(stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "::pxfPsPropsProlog:complibAllocMemory () failed."
            "pxfPsReadOpenImagePropsFromMemory:pxfPsPropsProlog () failed. "
            "[COMPLIB_STG_E_INSUFFICIENTMEMORY]"
            "ERROR:pxfPsReadOpenImageProps () failed. [02290008]\n");
}

TEST(Diagnostics, RefusedReleaseIsReported) {
  PropsHandle handle(pxfPsPropsProlog(false, nullptr, 0));
  ::testing::internal::CaptureStderr();
  {
    const testing::FaultScope faults({.refuseRelease = true});
    errno = ENOMEM;
    EXPECT_EQ(handle.Close(), kPropsHeapRefused);
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "COMPL\nERROR COMPL: HeapFree () failed.\nCannot allocate memory\n");
  EXPECT_EQ(handle.Close(), kPropsInvalidHandle);

  errno = 0;
  char text[24];
  FormatReport("TAG", 0, "message", text, sizeof(text));
  EXPECT_STREQ(text, "TRACE TAG: message\n");
  FormatReport("TAG", 7, "message", text, sizeof(text));
  EXPECT_STREQ(text, "TAG: message\n");
  FormatReport("TAG", 3, "a message too long for it", text, sizeof(text));
  EXPECT_STREQ(text, "FATAL TAG: a message to");
}

}  // namespace
}  // namespace deimg
