#pragma once

namespace vt::ruby {

/// Installs the platform that the environment describes (see platform/linux/Environment.h), once.
/// Throws std::runtime_error when a variable cannot be used or the tables of types and attributes
/// cannot be read; the next call then tries again.
void needWorld();

/// Reads the environment anew: what is loaded from here on knows nothing of what was before.
/// Objects of the world before stay usable. For tests.
void restartWorld();

}  // namespace vt::ruby
