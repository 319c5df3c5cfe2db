#pragma once

#include <string>

#include "vistaro/CommandOutline.h"

namespace vt::tool {

// The script that completes the command line of the program in a shell: to be sourced by bash, put
// into a folder of zsh's fpath as "_vistaro", or into fish's completions as "vistaro.fish".

std::string bashCompletions(const CommandOutline& program);
std::string zshCompletions(const CommandOutline& program);
std::string fishCompletions(const CommandOutline& program);

}  // namespace vt::tool
