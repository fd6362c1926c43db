#include "support/streams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace deimg::testing {
namespace {

template <typename T>
T& Of(void* cookie) {
  return *static_cast<T*>(cookie);
}

}  // namespace

std::uint32_t InputStream::Enter(Op op) {
  const int n = ++counts_[static_cast<std::size_t>(op)];
  return fault_ ? fault_(op, n) : 0;
}

InputStream::InputStream(std::vector<std::uint8_t> bytes, Fault fault)
    : bytes_(std::move(bytes)), fault_(std::move(fault)) {
  stream_.cookie = this;
  stream_.Open = [](void* c, std::uint16_t mode, std::uint32_t* error) {
    auto& s = Of<InputStream>(c);
    EXPECT_EQ(mode, DEIMG_OPEN_READ);
    if ((*error = s.Enter(Op::kOpen)) != 0) return;
    s.open_ = true;
    s.position_ = 0;
  };
  stream_.Close = [](void* c, std::uint32_t* error) {
    auto& s = Of<InputStream>(c);
    if ((*error = s.Enter(Op::kClose)) != 0) return;
    s.open_ = false;
  };
  stream_.Read = [](void* c, void* buffer, std::uint32_t* count, std::uint32_t* error) {
    auto& s = Of<InputStream>(c);
    std::uint32_t wanted = *count;
    *count = 0;
    if ((*error = s.Enter(Op::kRead)) != 0) return;
    if (s.cut) wanted = s.cut(s.count(Op::kRead), wanted);
    const std::size_t left = s.bytes_.size() - std::min(s.position_, s.bytes_.size());
    *count = static_cast<std::uint32_t>(std::min<std::size_t>({wanted, s.readAtMost, left}));
    if (*count != 0) std::memcpy(buffer, s.bytes_.data() + s.position_, *count);
    s.position_ += *count;
  };
  stream_.Write = [](void* c, const void*, std::uint32_t* count, std::uint32_t* error) {
    ADD_FAILURE() << "the input is never written";
    *count = 0;
    *error = Of<InputStream>(c).Enter(Op::kWrite) + 1;
  };
  stream_.Seek = [](void* c, std::uint16_t origin, std::int32_t offset, std::uint32_t* error) {
    auto& s = Of<InputStream>(c);
    if ((*error = s.Enter(Op::kSeek)) != 0) return;
    const std::int64_t base = origin == DEIMG_SEEK_CURRENT ? static_cast<std::int64_t>(s.position_)
                              : origin == DEIMG_SEEK_END
                                  ? static_cast<std::int64_t>(s.bytes_.size())
                                  : 0;
    s.position_ = static_cast<std::size_t>(std::max<std::int64_t>(base + offset, 0));
  };
  stream_.Tell = [](void* c, std::uint32_t* error) {
    auto& s = Of<InputStream>(c);
    *error = s.Enter(Op::kTell);
    return static_cast<std::uint32_t>(s.position_);
  };
}

std::uint32_t OutputStream::Enter(Op op) {
  const int n = ++counts_[static_cast<std::size_t>(op)];
  return fault_ ? fault_(op, n) : 0;
}

OutputStream::OutputStream(std::uint16_t progressMode, Fault fault) : fault_(std::move(fault)) {
  stream_.cookie = this;
  stream_.progressMode = progressMode;
  stream_.Open = [](void* c, std::uint16_t mode, std::uint32_t* error) {
    auto& s = Of<OutputStream>(c);
    s.openMode = mode;
    *error = s.Enter(Op::kOpen);
  };
  stream_.Close = [](void* c, std::uint32_t* error) {
    auto& s = Of<OutputStream>(c);
    *error = s.Enter(Op::kClose);
    s.closed = *error == 0;
  };
  stream_.Write = [](void* c, const void* buffer, std::uint32_t* count, std::uint32_t* error) {
    auto& s = Of<OutputStream>(c);
    if ((*error = s.Enter(Op::kWrite)) != 0) return;
    const auto* bytes = static_cast<const std::uint8_t*>(buffer);
    s.lines.emplace_back(bytes, bytes + *count);
  };
  stream_.Progress = [](void* c, std::uint16_t percent, std::uint32_t* error) {
    auto& s = Of<OutputStream>(c);
    s.reports.push_back(percent);
    *error = s.Enter(Op::kProgress);
  };
}

Outcome Develop(const std::vector<std::uint8_t>& file, std::uint32_t flags, std::uint32_t format,
                const DevelopParams* params, std::uint16_t progressMode) {
  InputStream input(file);
  OutputStream output(progressMode);
  Outcome outcome;
  if (params != nullptr) outcome.params = *params;
  outcome.result = DEImg_DevelopM480(input.get(), flags, format,
                                     params != nullptr ? &outcome.params : nullptr, output.get());
  outcome.lines = std::move(output.lines);
  outcome.reports = std::move(output.reports);
  return outcome;
}

DevelopParams RecordedParams() {
  DevelopParams params{};
  params.filled = 1;
  params.toneLevel = params.matrixLevel = params.processingSet = params.colourLevel =
      params.wbPreset = DEIMG_AS_RECORDED;
  return params;
}

std::vector<std::uint8_t> ReadFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::vector<std::string> TemporaryFilesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(directory)) {
    const std::string name = file.path().filename();
    if (name.starts_with("_dv")) names.push_back(name);
  }
  return names;
}

}  // namespace deimg::testing
