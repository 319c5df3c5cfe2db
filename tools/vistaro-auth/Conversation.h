#pragma once

#include <string>

namespace vt::auth {

/// Whether PAM, by the rules of `service`, accepts `password` for `name` and the account may be
/// used now. A refusal comes without the delay that PAM would add: how often somebody may try is
/// for the server to say. A module that asks for anything but one hidden text gets no answer.
bool isAcceptedByPam(const std::string& service, const std::string& name,
                     const std::string& password);

}  // namespace vt::auth
