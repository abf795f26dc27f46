#include <gtest/gtest.h>

#include "common/error.h"
TEST(Error, KeepsLines) {
  norvik::Error e(std::vector<std::string>{" a", " b"});
  EXPECT_EQ(e.lines().size(), 2u);
}
