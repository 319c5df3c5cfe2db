#include "metadata/types/ResultGroups.h"

#include <gtest/gtest.h>

#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

TEST(ResultGroups, NumberItemsByTheirTypeTree) {
  const ContentTypes types = shippedTypes();
  const ResultGroups groups(types);
  const struct {
    const char* type;
    std::optional<std::int64_t> number;
  } cases[] = {
      {"public.folder", 9},
      {"com.apple.application-bundle", 8},
      {"public.unix-executable", 8},
      {"com.apple.systempreference.prefpane", 3},
      {"public.email-message", 1},
      {"public.vcard", 2},
      {"public.font", 4},
      {"public.url", 5},
      {"com.adobe.pdf", 11},
      {"public.presentation", 12},
      {"public.jpeg", 13},
      {"public.svg-image", 13},
      {"public.mp3", 10},
      {"public.mpeg-4-audio", 10},
      {"public.mpeg-4", 7},
      {"public.plain-text", std::nullopt},
      {"public.data", std::nullopt},
      {"public.symlink", std::nullopt},
      {"public.3d-content", std::nullopt},
      {"com.apple.rtfd", std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    const auto type = types.find(c.type);
    ASSERT_TRUE(type);
    EXPECT_EQ(groups.numberOf(*type), c.number);
  }
}

TEST(ResultGroups, KeepDocumentsWithMacrosAndScriptsOutOfTheApplications) {
  const ContentTypes types = shippedTypes();
  const ResultGroups groups(types);
  for (const char* name : {"a.docm", "a.xlsm", "a.js", "a.sh"}) {
    SCOPED_TRACE(name);
    EXPECT_NE(groups.numberOf(types.typeOfFile(name)), 8);
  }
}

}  // namespace
}  // namespace vt
