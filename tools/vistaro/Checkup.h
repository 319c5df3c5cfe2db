#pragma once

#include <string>
#include <vector>

namespace vt::tool {

enum class Finding { kOk, kNote, kFault };

struct Diagnosis {
  Finding finding;
  std::string text;
};

/// What the doctor looks at, each in turn. Nothing is changed on disk but the settings' own folder,
/// which is made when it is missing.
std::vector<Diagnosis> checkIdentity();
std::vector<Diagnosis> checkResources();
std::vector<Diagnosis> checkAccounts();
std::vector<Diagnosis> checkPasswords();
std::vector<Diagnosis> checkSettings();
std::vector<Diagnosis> checkShares();
std::vector<Diagnosis> checkImages();
std::vector<Diagnosis> checkExtraction();
std::vector<Diagnosis> checkIndex();

}  // namespace vt::tool
