// Memory blocks, work streams and temporary names.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "storage/file_stream.h"
#include "storage/mem_block.h"
#include "storage/memory_stream.h"
#include "storage/stream_calls.h"
#include "support/fault_heap.h"
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

TEST(MemBlock, RefusesSizesThatDoNotFit) {
  EXPECT_EQ(MemBlock::Allocate(SIZE_MAX), nullptr);
  EXPECT_EQ(MemBlock::AllocateZeroed(SIZE_MAX - 8), nullptr);
  EXPECT_FALSE(BlockOf<std::uint32_t>::Zeroed(UINT64_MAX / 2));
}

TEST(MemoryStream, StaysInsideItsBlock) {
  MemoryStream stream = MemoryStream::Make(10);
  ASSERT_TRUE(stream);
  CallerStream& s = *stream.get();
  EXPECT_EQ(s.unused4, 0);
  EXPECT_EQ(s.unused5, 2);
  EXPECT_EQ(s.progressMode, DEIMG_PROGRESS_NEVER);
  EXPECT_EQ(s.Progress, nullptr);

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

TEST(MemoryStream, NeedsAllItsBlocks) {
  for (int n = 1; n <= 3; ++n) {
    const testing::FaultScope faults({.failAt = n});
    const auto before = testing::FaultScope::Live();
    EXPECT_FALSE(MemoryStream::Make(100)) << n;
    EXPECT_EQ(testing::FaultScope::Live(), before);
  }
}

class FileStreamTest : public ::testing::Test {
 protected:
  void SetUp() override {
    stream_ = FileStream::Make(path_.c_str());
    ASSERT_TRUE(stream_);
  }
  // Of this test alone: others run beside it.
  const testing::TemporaryDirectory directory_;
  const std::string path_ = directory_.path() + "/file";
  FileStream stream_;
};

TEST_F(FileStreamTest, OpensByItself) {
  CallerStream& s = *stream_.get();
  EXPECT_FALSE(std::filesystem::exists(path_));
  std::uint32_t position = 7;
  EXPECT_EQ(Tell(s, position), DEIMG_FILE_NOT_OPEN);
  EXPECT_EQ(Seek(s, DEIMG_SEEK_BEGINNING, 0), DEIMG_FILE_NOT_OPEN);
  EXPECT_EQ(Open(s, DEIMG_OPEN_READ), DEIMG_FILE_NOT_OPEN);
  EXPECT_EQ(Write(s, "abc", 3), DEIMG_OK);
  EXPECT_EQ(Seek(s, DEIMG_SEEK_BEGINNING, -1), DEIMG_FILE_SEEK);
  EXPECT_EQ(Close(s), DEIMG_OK);
  char read[4] = {};
  std::uint32_t delivered = 0;
  EXPECT_EQ(Read(s, read, 4, delivered), DEIMG_OK);  // for reading
  EXPECT_STREQ(read, "abc");
  EXPECT_EQ(Write(s, "x", 1), DEIMG_FILE_WRITE);
  EXPECT_EQ(Close(s), DEIMG_OK);
  EXPECT_EQ(Write(s, "yz", 2), DEIMG_OK);  // truncating
  EXPECT_EQ(std::filesystem::file_size(path_), 2u);
}

TEST_F(FileStreamTest, UpdatesAndIsDeleted) {
  CallerStream& s = *stream_.get();
  EXPECT_EQ(Open(s, DEIMG_OPEN_UPDATE), DEIMG_OK);
  EXPECT_EQ(Write(s, "hello", 5), DEIMG_OK);
  EXPECT_EQ(Open(s, DEIMG_OPEN_UPDATE), DEIMG_OK);
  EXPECT_EQ(Write(s, "J", 1), DEIMG_OK);
  std::uint32_t position = 0;
  EXPECT_EQ(Seek(s, DEIMG_SEEK_END, 0), DEIMG_OK);
  EXPECT_EQ(Tell(s, position), DEIMG_OK);
  EXPECT_EQ(position, 5u);
  stream_.Release();
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_FALSE(FileStream::Make(std::string(256, 'x').c_str()));
  EXPECT_TRUE(FileStream::Make(std::string(255, 'x').c_str()));
}

TEST(TemporaryFiles, TakeTheNextFreeName) {
  char first[FileStreamState::kPathSize];
  ASSERT_TRUE(MakeTemporaryName(first, sizeof(first)));
  EXPECT_NE(std::strstr(first, "/_dv"), nullptr);
  FileStream stream;
  ASSERT_EQ(FileStream::MakeTemporary(stream), DEIMG_OK);
  const std::string path = stream.path();
  EXPECT_EQ(std::filesystem::status(path).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  EXPECT_EQ(Write(*stream.get(), "abc", 3), DEIMG_OK);

  // Emptied again by an open, but never made anew once it is gone.
  EXPECT_EQ(Open(*stream.get(), DEIMG_OPEN_TRUNCATE), DEIMG_OK);
  EXPECT_EQ(std::filesystem::file_size(path), 0u);
  std::filesystem::remove(path);
  EXPECT_EQ(Open(*stream.get(), DEIMG_OPEN_TRUNCATE), DEIMG_FILE_NOT_OPEN);
  stream.Release();
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace deimg
