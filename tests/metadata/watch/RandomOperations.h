#pragma once

#include <random>
#include <string>
#include <vector>

namespace vt {

/// Does things at random to the files below a folder: makes, writes, moves, swaps and removes
/// files, folders and links, and changes their rights, owners, times and access control lists.
class RandomOperations {
 public:
  /// `outside` is another folder of the same file system, from which and to which things are moved.
  RandomOperations(std::string root, std::string outside, unsigned seed)
      : root_(std::move(root)), outside_(std::move(outside)), random_(seed) {}

  /// Does one thing, or nothing where that can't be done.
  void one();

 private:
  std::size_t below(std::size_t count) { return random_() % count; }
  std::string name() { return std::string(1, static_cast<char>('a' + below(5))); }
  std::string somewhere(const std::string& root);
  std::string somewhere() { return somewhere(below(8) == 0 ? outside_ : root_); }
  void write(const std::string& path);
  void setList(const std::string& path);

  std::string root_;
  std::string outside_;
  std::mt19937 random_;
};

}  // namespace vt
