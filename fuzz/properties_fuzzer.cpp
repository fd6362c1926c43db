// The property reader on its own: the whole input is the file.
#include "job.h"
#include "props/image_props.h"
#include "support/fault_heap.h"

using namespace deimg;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const testing::FaultScope scope({});
  {
    fuzz::PieceStream input({{data, size}, 0, 0, {}});
    ImagePropsBlock block;
    if (ReadImagePropsBlock(*input.get(), block) == DEIMG_OK) {
      ImageProps props{};
      (void)pxfPsReadOpenImageProps(block, props);
    }
  }
  fuzz::Require(testing::FaultScope::Live() == 0, "every block to be given back");
  fuzz::Require(testing::FaultScope::LargestRequest() <= size + 4096, "blocks within the file");
  return 0;
}
