#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class VTSearchResult;
class VTUser;

/// What a search found: one group per kind of content, by the kinds' sort order.
class VTSearchResultContainer final : public VTObject {
 public:
  using Groups = ObjectArray<VTSearchResult>;

  /// `initWithUser:results:`
  /// Keeps `results` itself. Both may be nil; a search that could not be carried out has nil
  /// results.
  static std::shared_ptr<VTSearchResultContainer> initWithUser(std::shared_ptr<VTUser> user,
                                                               std::shared_ptr<Groups> results);

  /// The groups; nil after a search that could not be carried out.
  std::shared_ptr<Groups> results() const { return results_; }
  /// How many groups there are; 0 when results() is nil.
  std::uint64_t count() const { return results_ ? results_->size() : 0; }

  /// `resultAtIndex:`
  /// The group at `index`. Nil when `index` is larger than count(), and always when results() is
  /// nil; throws std::out_of_range when it equals the count of a list that is there.
  std::shared_ptr<VTSearchResult> resultAtIndex(std::uint64_t index) const;

  /// `resultWithGroupName:`
  /// The first group whose title is `name`, case and all; nullptr when none.
  std::shared_ptr<VTSearchResult> resultWithGroupName(const std::string& name) const;

  /// `removeResultsWithContentType:`
  /// Replaces results() by a copy without the first group whose kind has `contentType` as its only
  /// type. A kind that lists further types stays, and so does any second such group.
  void removeResultsWithContentType(const std::string& contentType);

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSearchResultContainer() = default;

  std::shared_ptr<VTUser> user_;
  std::shared_ptr<Groups> results_;  // never edited in place: callers may be walking it
};

}  // namespace vt
