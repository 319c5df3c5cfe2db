#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/Images.h"

namespace vt {

/// Squares of one colour in place of thumbnails and icons, of the paths that a test chooses, and a
/// record of what was tried. Any path can be opened, unless it is said otherwise.
class MemoryImages final : public Images {
 public:
  /// What isAskedInProcess() answers; yes unless it is set.
  void setAskedInProcess(bool inProcess) { inProcess_ = inProcess; }
  void addThumbnail(const std::string& path) { thumbnails_.insert(path); }
  void addIcon(const std::string& path) { icons_.insert(path); }
  void refuse(const std::string& path, Refusal refusal) { refusals_[path] = refusal; }
  /// Makes every PNG fail from now on.
  void refusePng() { refusesPng_ = true; }

  /// What was tried, in order: "open /a", "thumbnail /a 128x65", "thumbnail /a 128x65 icon mode",
  /// "icon /a 128", "png".
  const std::vector<std::string>& attempts() const { return attempts_; }

  /// The picture that thumbnail() and icon() give of what they know.
  static Image thumbnailOf(const ThumbnailSize& size);
  static Image iconOf(std::int64_t pixels);

  bool isAskedInProcess() const override { return inProcess_; }
  Result<std::unique_ptr<Source>, Refusal> open(const std::string& path) override;
  std::optional<Image> thumbnail(const Source& source, const ThumbnailSize& size) override;
  std::optional<Image> icon(const std::string& path, std::int64_t maxPixelSize) override;
  std::optional<std::string> png(const Image& image) override;

 private:
  bool inProcess_ = true;
  bool refusesPng_ = false;
  std::set<std::string> thumbnails_;
  std::set<std::string> icons_;
  std::map<std::string, Refusal> refusals_;
  std::vector<std::string> attempts_;
};

}  // namespace vt
