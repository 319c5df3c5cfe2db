#include "extraction/documents/DublinCore.h"

namespace vt {

bool takeDublinCore(std::string_view name, std::string_view text, FoundAttributes& attributes) {
  if (name == "title") {
    attributes.setText("kMDItemTitle", text);
  } else if (name == "description") {
    attributes.setText("kMDItemDescription", text);
  } else if (name == "language") {
    attributes.addText("kMDItemLanguages", text);
  } else if (name == "publisher") {
    attributes.addText("kMDItemPublishers", text);
  } else if (name == "contributor") {
    attributes.addText("kMDItemContributors", text);
  } else if (name == "rights") {
    attributes.setText("kMDItemRights", text);
  } else if (name == "identifier") {
    attributes.setText("kMDItemIdentifier", text);
  } else if (name == "coverage") {
    attributes.setText("kMDItemCoverage", text);
  } else {
    return false;
  }
  return true;
}

}  // namespace vt
