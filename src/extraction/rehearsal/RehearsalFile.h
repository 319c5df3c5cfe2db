#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// A file of our own making that a worker looks into before any other, and before it forks: what
/// libraries set up or load when they are first used then is there for the children of all files.
struct RehearsalFile {
  std::string_view type;  ///< its identifier in the table of content types
  std::string bytes;
};

// What each program rehearses with: small files that have of its formats what most files have.

/// Of PDF.
std::vector<RehearsalFile> rehearsalOfPdf();
/// Of mail.
std::vector<RehearsalFile> rehearsalOfMail();
/// Of pictures.
std::vector<RehearsalFile> rehearsalOfPictures();
/// Of HTML pages.
std::vector<RehearsalFile> rehearsalOfHtml();
/// Of other documents.
std::vector<RehearsalFile> rehearsalOfDocuments();

}  // namespace vt
