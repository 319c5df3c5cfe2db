#include "foundation/SharedLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace vt {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(SharedLibrary, GivesItsFunctions) {
  const SharedLibrary library("libm.so.6");
  EXPECT_EQ(library.function<double(double)>("sqrt")(9), 3);
}

TEST(SharedLibrary, SaysWhichLibraryCannotBeLoaded) {
  EXPECT_THAT([] { SharedLibrary("libmissing.so.1"); },
              ThrowsMessage<std::runtime_error>(HasSubstr("libmissing.so.1")));
}

TEST(SharedLibrary, SaysWhichFunctionIsMissing) {
  const SharedLibrary library("libm.so.6");
  EXPECT_THAT([&] { library.function<void()>("no_such_function"); },
              ThrowsMessage<std::runtime_error>(HasSubstr("no_such_function")));
}

}  // namespace
}  // namespace vt
