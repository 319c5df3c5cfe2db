#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>

#include "foundation/Value.h"

namespace vt {

/// What a file keeps beside its content in extended attributes, whatever its format: tags, comment
/// and origin, as desktops (`user.xdg.*`) and file servers for Macs write them. docs/catalogue.md
/// lists which are read. By names of the schema; empty when there are none that can be read.
std::map<std::string, Value> extendedAttributesOf(int file);

/// The names of the schema that it may give; no extractor gives any of them.
std::span<const std::string_view> extendedAttributeNames();

/// Whether a list of names, each ended by NUL, as the kernel gives it, has one that is read.
bool hasExtendedAttributes(std::string_view list);

}  // namespace vt
