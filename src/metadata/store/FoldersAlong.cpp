#include "metadata/store/FoldersAlong.h"

namespace vt {
namespace {

/// Takes the first step off a canonical path: "a" of "/a/b".
std::string_view takeStep(std::string_view& path) {
  path.remove_prefix(1);
  const std::string_view step = path.substr(0, path.find('/'));
  path.remove_prefix(step.size());
  return step;
}

}  // namespace

std::vector<std::uint32_t> foldersAlong(const SegmentColumns& segment, std::string_view path) {
  if (segment.folderCount() == 0) return {};
  std::vector<std::uint32_t> folders = {0};  // "/" is the first
  std::string_view rest = path == "/" ? std::string_view() : path;
  // A folder's parent is before it, so one pass meets all steps in turn.
  std::string_view step = rest.empty() ? rest : takeStep(rest);
  for (std::uint32_t folder = 1; !step.empty() && folder < segment.folderCount(); ++folder) {
    if (segment.parents[folder] != folders.back() || segment.folderNames[folder] != step) continue;
    folders.push_back(folder);
    step = rest.empty() ? rest : takeStep(rest);
  }
  if (!step.empty()) folders.clear();
  return folders;
}

std::string folderPathOf(const SegmentColumns& segment, std::uint32_t folder) {
  std::vector<std::uint32_t> steps;
  // A folder comes after its parent, so this ends whatever the numbers are.
  for (std::uint32_t at = folder; at != 0;) {
    steps.push_back(at);
    const std::uint32_t parent = segment.parents[at];
    at = parent < at ? parent : 0;
  }
  std::string path;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    path.append("/").append(segment.folderNames[*step]);
  }
  return path.empty() ? "/" : path;
}

}  // namespace vt
