#include "api/thread_count.h"

#include <algorithm>
#include <charconv>

#include "pipeline/bands.h"
#include "platform/platform.h"
#include "platform/thread.h"

namespace deimg {

int ThreadCountOf(std::string_view text) {
  const int all = std::min(platform::ProcessorCount(), ThreadPlan::kMost);
  if (text == "all" || text == "0") return all;
  int count = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, count);
  const bool isCount = error == std::errc() && last == end && count >= 1;
  return isCount && count <= ThreadPlan::kMost ? count : 0;
}

int ThreadCountOfEnvironment() {
  char text[8];
  if (!platform::EnvironmentValue("DEIMG_THREADS", text, sizeof(text))) return 1;
  return std::max(ThreadCountOf(text), 1);
}

}  // namespace deimg
