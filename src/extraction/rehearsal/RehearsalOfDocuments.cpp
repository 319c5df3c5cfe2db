#include "extraction/rehearsal/RehearsalFile.h"

namespace vt {
namespace {

constexpr const char* kPage =
    "<!DOCTYPE html>\n"
    "<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Rehearsal &amp; more</title>\n"
    "<meta name=\"keywords\" content=\"a, b\"><meta name=\"author\" content=\"Somebody\">\n"
    "<style>p { margin: 0 }</style><script>var a = 1 < 2;</script></head>\n"
    "<body class=\"page\"><h1>The quick brown fox</h1><!-- unseen -->\n"
    "<p>jumps over <b>the</b> <a href=\"x\">lazy</a> dog, d\u00e9j\u00e0 vu.<br>\n"
    "<ul><li>one<li>two</ul><table><tr><td>1<td>2</table><img src=\"x\" alt=\"a picture\">\n"
    "</body></html>\n";

constexpr const char* kXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<note lang=\"en\"><title>Rehearsal</title><p text=\"a\">The quick &lt;brown&gt; "
    "fox</p></note>\n";

constexpr const char* kRichText =
    "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0 Arial;}}{\\info{\\title Rehearsal}}"
    "\\f0 The {\\b quick} d\\'e9j\\'e0 vu\\par}\n";

}  // namespace

std::vector<RehearsalFile> rehearsalOfHtml() { return {{"public.html", kPage}}; }

std::vector<RehearsalFile> rehearsalOfDocuments() {
  return {{"public.xml", kXml}, {"public.rtf", kRichText}};
}

}  // namespace vt
