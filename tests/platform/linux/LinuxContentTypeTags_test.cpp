#include "platform/linux/LinuxContentTypeTags.h"

#include <gtest/gtest.h>

#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

TEST(LinuxContentTypeTags, GivesThePreferredMimeTypeOfAType) {
  const LinuxContentTypeTags tags(std::make_shared<const ContentTypes>(shippedTypes()));
  struct Case {
    const char* what;
    const char* type;
    std::string_view tagClass;
    std::optional<std::string> tag;
  };
  const Case cases[] = {
      {"one of one", "public.png", kUTTagClassMIMEType, "image/png"},
      {"the first of several", "com.adobe.pdf", kUTTagClassMIMEType, "application/pdf"},
      {"case does not count", "COM.Adobe.PDF", kUTTagClassMIMEType, "application/pdf"},
      {"a type without any", "public.folder", kUTTagClassMIMEType, std::nullopt},
      {"an unknown type", "org.example.nothing", kUTTagClassMIMEType, std::nullopt},
      {"no type", "", kUTTagClassMIMEType, std::nullopt},
      {"another class", "com.adobe.pdf", "public.filename-extension", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(tags.UTTypeCopyPreferredTagWithClass(c.type, c.tagClass), c.tag);
  }
}

TEST(LinuxContentTypeTags, KnowsNoTagsWithoutATable) {
  const LinuxContentTypeTags tags(nullptr);
  EXPECT_EQ(tags.UTTypeCopyPreferredTagWithClass("com.adobe.pdf", kUTTagClassMIMEType),
            std::nullopt);
}

}  // namespace
}  // namespace vt
