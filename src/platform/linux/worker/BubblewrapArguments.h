#pragma once

#include <string>
#include <vector>

namespace vt {

/// The arguments of bubblewrap, its own name among them, that start the worker program at the
/// absolute path `program` in namespaces of its own, where it finds nothing but itself, libraries
/// and fonts.
std::vector<std::string> bubblewrapArguments(const std::string& program);

}  // namespace vt
