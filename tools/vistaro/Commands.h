#pragma once

#include <CLI/CLI.hpp>

namespace vt::tool {

/// Each adds one command to `app`; when the command is the one that was typed, it runs while the
/// command line is parsed and leaves its exit code in `status`.
void addSearchCommand(CLI::App& app, int& status);
void addUserCommand(CLI::App& app, int& status);
void addKindsCommand(CLI::App& app, int& status);
void addMimeCommand(CLI::App& app, int& status);
void addMetadataCommand(CLI::App& app, int& status);
void addThumbnailCommand(CLI::App& app, int& status);
void addPreviewCommand(CLI::App& app, int& status);
void addIndexCommand(CLI::App& app, int& status);
void addFoldersCommand(CLI::App& app, int& status);
void addSavedCommand(CLI::App& app, int& status);
void addSettingsCommand(CLI::App& app, int& status);
void addLinksCommand(CLI::App& app, int& status);
void addSharesCommand(CLI::App& app, int& status);
void addAttributesCommand(CLI::App& app, int& status);
void addStatusCommand(CLI::App& app, int& status);
void addDoctorCommand(CLI::App& app, int& status);
void addCompletionCommand(CLI::App& app, int& status);
void addManualCommand(CLI::App& app, int& status);

}  // namespace vt::tool
