#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/Array.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class KindRegistry;

/// A named family of content types under which hits are grouped.
///
/// The kinds come from the resource "ContentTypeGroups.plist", read on the first use of any of the
/// class operations and held for the life of the process.
class VTSearchKind : public VTObject {
 public:
  /// `initWithTitle:types:`
  /// A kind outside the registry. `types` is an array of content type identifiers and may be nil.
  static std::shared_ptr<VTSearchKind> initWithTitle(std::string title,
                                                     std::shared_ptr<Array> types);

  /// All kinds in the order of the resource: the registry's own array.
  static std::shared_ptr<ObjectArray<VTSearchKind>> allSearchKinds();
  /// A new array of the kinds that are searchable, by title without regard to case.
  static std::shared_ptr<ObjectArray<VTSearchKind>> searchableKinds();
  /// `kindForContentTypes:`
  /// The kind that lists the first of `types` that any kind lists, else defaultKind(). `types` goes
  /// from the most specific to the most general and may be nil.
  static std::shared_ptr<VTSearchKind> kindForContentTypes(const Array* types);
  /// The fallback kind; nullptr when the resource marks none.
  static std::shared_ptr<VTSearchKind> defaultKind();
  /// `kindWithTitle:`
  /// The first kind whose title is `title`, exactly; nullptr when none.
  static std::shared_ptr<VTSearchKind> kindWithTitle(const std::string& title);

  /// `titleCompare:`
  /// -1, 0 or 1 as this title goes before, with or after the other's, case ignored.
  int titleCompare(const VTSearchKind& other) const;

  std::string title() const { return title_; }
  std::shared_ptr<Array> types() const { return types_; }

  bool searchable() const { return searchable_; }
  void setSearchable(bool searchable);
  /// 1 means thumbnails, any other value a list.
  std::int32_t defaultView() const { return defaultView_; }
  void setDefaultView(std::int32_t defaultView);
  /// The rank of this kind's group among the groups; small ones first.
  std::uint64_t sortorder() const { return sortorder_; }
  void setSortorder(std::uint64_t sortorder);

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSearchKind() = default;

  std::string title_;
  std::shared_ptr<Array> types_;
  bool searchable_ = false;
  std::int32_t defaultView_ = 0;
  std::uint64_t sortorder_ = 0;
};

}  // namespace vt
