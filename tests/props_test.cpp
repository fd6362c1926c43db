// The edges of the property heap and of the file header, and the diagnostics.
#include <gtest/gtest.h>

#include <cstring>

#include "props/diagnostics.h"
#include "props/image_props.h"
#include "props/props_heap.h"
#include "rawfile/property_set.h"
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

TEST(ImageProps, ChecksHeaderAndDirectory) {
  // A file of 50 bytes whose heap starts at `header` and holds, at `directory`, `count` entries.
  const auto read = [](std::uint32_t header, std::uint32_t directory, int count, char order = 'I') {
    Bytes file(50, 0);
    const auto put = [&](std::size_t at, std::uint32_t value, std::size_t size) {
      for (std::size_t i = 0; i < size && at + i < file.size(); ++i) {
        file[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
      }
    };
    file[0] = 'I';
    file[1] = static_cast<std::uint8_t>(order);
    put(2, header, 4);
    put(header + directory, static_cast<std::uint32_t>(count), 2);
    put(header + directory + 2, 0x300A, 2);
    put(46, directory, 4);
    testing::InputStream input(file);
    ImagePropsBlock block;
    return ReadImagePropsBlock(*input.get(), block);
  };
  EXPECT_EQ(read(26, 8, 1), DEIMG_OK);
  EXPECT_EQ(read(26, 8, 1, 'M'), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(25, 9, 1), DEIMG_PROPS_UNREADABLE) << "a heap in the header";
  EXPECT_EQ(read(51, 0, 0), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(44, 0, 0), DEIMG_OK) << "a count and an offset";
  EXPECT_EQ(read(45, 0, 0), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(26, 18, 0), DEIMG_OK);
  EXPECT_EQ(read(26, 19, 0), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(26, 12, 1), DEIMG_OK) << "the last entry ends the file, and is its offset";
  EXPECT_EQ(read(26, 13, 1), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(26, 8, 3276), DEIMG_PROPS_UNREADABLE);
  EXPECT_EQ(read(26, 8, 3277), DEIMG_PROPS_DIRECTORY_TOO_LARGE) << "its size is looked at first";
  testing::InputStream tooShort(Bytes(25, 'I'));
  ImagePropsBlock block;
  EXPECT_EQ(ReadImagePropsBlock(*tooShort.get(), block), DEIMG_PROPS_UNREADABLE);
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
