// libFuzzer target: the free-format reader (harness.h).
#include <cstddef>
#include <cstdint>

#include "harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  norvik::fuzz::list_input({data, size});
  return 0;
}
