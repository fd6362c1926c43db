// Memory blocks, work streams and temporary names.
#include <gtest/gtest.h>

#include <cstring>

#include "storage/file_stream.h"
#include "storage/mem_block.h"
#include "storage/memory_stream.h"
#include "storage/stream_calls.h"
#include "support/temporary_directory.h"

namespace deimg {
namespace {

TEST(MemBlock, RecognisesItsOwn) {
  void* const empty = MemBlock::Allocate(0);
  auto* const zeroed = static_cast<std::uint8_t*>(MemBlock::AllocateZeroed(1000));
  ASSERT_NE(empty, nullptr);
  ASSERT_NE(zeroed, nullptr);
  EXPECT_NE(empty, zeroed);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(zeroed) % 64, 0u);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(zeroed[i], 0);
  EXPECT_EQ(MemBlock::Check(zeroed), DEIMG_OK);
  EXPECT_EQ(MemBlock::Release(zeroed + 512), DEIMG_NOT_A_BLOCK);
  EXPECT_EQ(MemBlock::Release(nullptr), DEIMG_NOT_A_BLOCK);
  EXPECT_EQ(MemBlock::Release(zeroed), DEIMG_OK);
  EXPECT_EQ(MemBlock::Release(empty), DEIMG_OK);
}

TEST(MemoryStream, StaysInsideItsBlock) {
  MemoryStream stream = MemoryStream::Make(10);
  ASSERT_TRUE(stream);
  CallerStream& s = *stream.get();
  std::uint32_t error = 99;
  std::uint32_t count = 16;
  s.Write(s.cookie, "0123456789abcdef", &count, &error);
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(error, 0u);
  const auto positionAfter = [&](DEImgSeekOrigin origin, std::int32_t offset) {
    EXPECT_EQ(Seek(s, origin, offset), DEIMG_OK);
    std::uint32_t position = 0;
    EXPECT_EQ(Tell(s, position), DEIMG_OK);
    return position;
  };
  EXPECT_EQ(positionAfter(DEIMG_SEEK_BEGINNING, -5), 0u);
  EXPECT_EQ(positionAfter(DEIMG_SEEK_CURRENT, 100), 10u);
  EXPECT_EQ(positionAfter(DEIMG_SEEK_BEGINNING, 4), 4u);
  EXPECT_EQ(positionAfter(DEIMG_SEEK_CURRENT, -1), 3u);
  EXPECT_EQ(positionAfter(DEIMG_SEEK_END, 0), 10u);

  EXPECT_EQ(Open(s, DEIMG_OPEN_TRUNCATE), DEIMG_OK);  // rewinds, and keeps the contents
  char read[16] = {};
  std::uint32_t delivered = 0;
  EXPECT_EQ(Read(s, read, 16, delivered), DEIMG_OK);
  EXPECT_EQ(delivered, 10u);
  EXPECT_STREQ(read, "0123456789");
}

TEST(FileStream, KeepsOneNamelessFile) {
  const testing::TemporaryDirectory directory;
  char first[256];
  ASSERT_TRUE(MakeTemporaryName(first, sizeof(first)));
  EXPECT_NE(std::strstr(first, "/_dv"), nullptr);
  EXPECT_FALSE(MakeTemporaryName(first, 12));
  FileStream stream;
  ASSERT_EQ(FileStream::MakeTemporary(stream), DEIMG_OK);
  EXPECT_TRUE(directory.IsEmpty()) << "the name is gone at once";
  CallerStream& s = *stream.get();
  std::uint32_t position = 7, delivered = 0;
  char read[8] = {};
  EXPECT_EQ(Tell(s, position), DEIMG_FILE_NOT_OPEN);
  EXPECT_EQ(Write(s, "hello", 5), DEIMG_OK);  // opens by itself, emptied
  EXPECT_EQ(Seek(s, DEIMG_SEEK_BEGINNING, -1), DEIMG_FILE_SEEK);
  EXPECT_EQ(Open(s, DEIMG_OPEN_UPDATE), DEIMG_OK);  // rewinds and keeps
  EXPECT_EQ(Write(s, "J", 1), DEIMG_OK);
  EXPECT_EQ(Seek(s, DEIMG_SEEK_END, -1), DEIMG_OK);
  EXPECT_EQ(Seek(s, DEIMG_SEEK_CURRENT, 1), DEIMG_OK);
  EXPECT_EQ(Tell(s, position), DEIMG_OK);
  EXPECT_EQ(position, 5u);
  EXPECT_EQ(Close(s), DEIMG_OK);
  EXPECT_EQ(Read(s, read, 8, delivered), DEIMG_OK);  // from the beginning
  EXPECT_STREQ(read, "Jello");
  EXPECT_EQ(delivered, 5u);
  EXPECT_EQ(Close(s), DEIMG_OK);
  EXPECT_EQ(Write(s, "x", 1), DEIMG_OK);  // emptied again
  EXPECT_EQ(Open(s, DEIMG_OPEN_READ), DEIMG_OK);
  EXPECT_EQ(Read(s, read, 8, delivered), DEIMG_OK);
  EXPECT_EQ(delivered, 1u);
  EXPECT_EQ(Open(s, DEIMG_OPEN_TRUNCATE), DEIMG_OK);
  EXPECT_EQ(Read(s, read, 8, delivered), DEIMG_OK);
  EXPECT_EQ(delivered, 0u);
}

}  // namespace
}  // namespace deimg
