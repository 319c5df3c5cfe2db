#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "directory/VTUser.h"

namespace vt::tool {

/// The user called `name`, for whoever runs the command to `deed` ("search") on their behalf;
/// nullptr without a name. Throws CommandError when there is no such user (usage) and for anybody
/// but oneself unless run by root (failure).
std::shared_ptr<VTUser> userOnBehalf(const std::optional<std::string>& name, std::string_view deed);

}  // namespace vt::tool
