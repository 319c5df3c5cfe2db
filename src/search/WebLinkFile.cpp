#include "search/WebLinkFile.h"

#include "foundation/Dictionary.h"
#include "foundation/PropertyList.h"

namespace vt {
namespace {

// So that a small file cannot unfold to many values: a browser writes about ten.
constexpr PropertyListLimits kLimits{.bytes = kMostWebLinkBytes, .objects = 10'000};

/// What follows the last dot of the last name; "" when there is none, or nothing before it.
std::string_view extensionOf(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string_view{} : name.substr(dot + 1);
}

}  // namespace

bool isWebLinkPath(std::string_view path) {
  const std::string_view extension = extensionOf(path);
  return extension == "webloc" || extension == "webhistory";
}

std::optional<std::string> webLinkInFile(std::string_view bytes) {
  const Result<Value, PropertyListError> root = readPropertyList(bytes, kLimits);
  const std::shared_ptr<Dictionary> link = root ? root->dictionary() : nullptr;
  const Value* address = link ? link->find("URL") : nullptr;
  const std::string* text = address ? address->get<std::string>() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

}  // namespace vt
