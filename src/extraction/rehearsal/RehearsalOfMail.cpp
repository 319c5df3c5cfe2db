#include "extraction/rehearsal/RehearsalFile.h"

namespace vt {
namespace {

constexpr const char* kHead =
    "From: \"Some Body\" <somebody@example.com>\r\n"
    "To: =?utf-8?Q?=C3=89tienne?= <etienne@example.org>, others@example.org\r\n"
    "Cc: =?iso-8859-1?B?6XQ=?= <et@example.org>\r\n"
    "Subject: =?utf-8?B?w6l0w6k=?= and plain words\r\n"
    "Date: Thu, 02 Jan 2020 03:04:05 +0100\r\n"
    "Message-ID: <1@example.com>\r\n"
    "MIME-Version: 1.0\r\n";

constexpr const char* kPlain =
    "Content-Type: text/plain; charset=utf-8\r\n"
    "\r\n"
    "The quick brown fox jumps over the lazy dog.\r\n";

constexpr const char* kParts =
    "Content-Type: multipart/mixed; boundary=\"==\"\r\n"
    "\r\n"
    "--==\r\n"
    "Content-Type: text/plain; charset=iso-8859-1\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\n"
    "\r\n"
    "d=E9j=E0 vu\r\n"
    "--==\r\n"
    "Content-Type: text/html; charset=utf-8\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "PGh0bWw+PGJvZHk+PHA+VGhlIHF1aWNrIDxiPmJyb3duPC9iPiBmb3g8L3A+PC9ib2R5PjwvaHRtbD4=\r\n"
    "--==\r\n"
    "Content-Type: application/octet-stream; name=\"a.bin\"\r\n"
    "Content-Disposition: attachment; filename=\"a.bin\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "AAEC\r\n"
    "--==--\r\n";

}  // namespace

std::vector<RehearsalFile> rehearsalOfMail() {
  return {{"com.apple.mail.email", std::string(kHead) + kPlain},
          {"com.apple.mail.email", std::string(kHead) + kParts}};
}

}  // namespace vt
