#include "images/worker/PageText.h"

#include <glib.h>

#include <array>
#include <memory>
#include <utility>

#include "foundation/TextDecoding.h"
#include "foundation/UTF8.h"

namespace vt::worker {
namespace {

using GText = std::unique_ptr<gchar, decltype(&g_free)>;

std::string withoutControls(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == '\r') {
      if (i + 1 == text.size() || text[i + 1] != '\n') plain += '\n';
    } else if (byte == '\f') {
      plain += '\n';
    } else if ((byte >= 0x20 && byte != 0x7f) || byte == '\n' || byte == '\t') {
      plain += text[i];
    }
  }
  return plain;
}

std::string escaped(std::string_view text) {
  const GText markup(g_markup_escape_text(text.data(), static_cast<gssize>(text.size())), g_free);
  return markup.get();
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = g_ascii_tolower(c);
  return lower;
}

/// The characters that an entity between "&" and ";" stands for; nothing when nobody knows it.
std::string characterOf(std::string_view entity) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 12> kNamed = {{
      {"amp", "&"},
      {"lt", "<"},
      {"gt", ">"},
      {"quot", "\""},
      {"apos", "'"},
      {"nbsp", " "},
      {"ndash", "–"},
      {"mdash", "—"},
      {"copy", "©"},
      {"hellip", "…"},
      {"auml", "ä"},
      {"euro", "€"},
  }};
  for (const auto& [name, character] : kNamed) {
    if (entity == name) return std::string(character);
  }
  if (!entity.starts_with('#')) return "";
  entity.remove_prefix(1);
  const bool hexadecimal = entity.starts_with('x') || entity.starts_with('X');
  const std::string digits(entity.substr(hexadecimal ? 1 : 0));
  const guint64 number = g_ascii_strtoull(digits.c_str(), nullptr, hexadecimal ? 16 : 10);
  std::string character;
  if (number >= 0x20 && number <= 0x10ffff) {
    appendCodePoint(character, static_cast<char32_t>(number));
  }
  return character;
}

bool isBlock(std::string_view name) {
  static constexpr std::array<std::string_view, 17> kBlocks = {
      "p",  "div", "br", "li",    "tr",    "h1",      "h2",      "h3",        "h4",
      "h5", "h6",  "ul", "table", "title", "section", "article", "blockquote"};
  for (const std::string_view block : kBlocks) {
    if (name == block) return true;
  }
  return false;
}

/// Gathers text as it is read on a page: runs of white space are one blank, and blocks begin lines.
class FlowingText {
 public:
  void add(char byte) {
    if (g_ascii_isspace(byte)) {
      wantsBlank_ = true;
      return;
    }
    if (wantsBlank_ && !text_.empty() && text_.back() != '\n') text_ += ' ';
    wantsBlank_ = false;
    text_ += byte;
  }
  void endLine() {
    if (!text_.empty() && !text_.ends_with("\n\n")) text_ += '\n';
    wantsBlank_ = false;
  }
  std::string take() { return std::move(text_); }

 private:
  std::string text_;
  bool wantsBlank_ = false;
};

/// Where to go on after the tag, comment or hidden element that begins at `start` with "<".
std::size_t endOfTag(std::string_view html, std::string_view lower, std::size_t start,
                     FlowingText& text) {
  const auto after = [&](std::string_view what, std::size_t from) {
    const std::size_t found = lower.find(what, from);
    return found == lower.npos ? html.size() : found + what.size();
  };
  if (lower.substr(start).starts_with("<!--")) return after("-->", start);
  std::size_t nameStart = start + 1;
  if (nameStart < lower.size() && lower[nameStart] == '/') ++nameStart;
  std::size_t nameEnd = nameStart;
  while (nameEnd < lower.size() && g_ascii_isalnum(lower[nameEnd])) ++nameEnd;
  const std::string_view name = lower.substr(nameStart, nameEnd - nameStart);
  if (isBlock(name)) text.endLine();
  const bool isOpening = nameStart == start + 1;
  if (isOpening && (name == "script" || name == "style")) {
    return after(">", after("</" + std::string(name), start));
  }
  return after(">", start);
}

/// The markup of one line's text: `code`, **strong** and *emphasis*.
std::string inlineMarkup(std::string_view line) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kMarks = {
      {{"`", "tt"}, {"**", "b"}, {"__", "b"}, {"*", "i"}}};
  std::string markup;
  std::size_t plainStart = 0;
  for (std::size_t i = 0; i < line.size();) {
    std::size_t next = i + 1;
    for (const auto& [mark, tag] : kMarks) {
      if (!line.substr(i).starts_with(mark)) continue;
      const std::size_t inner = i + mark.size();
      const std::size_t end = line.find(mark, inner);
      if (end == line.npos || end == inner) break;
      markup += escaped(line.substr(plainStart, i - plainStart));
      markup += "<" + std::string(tag) + ">" + escaped(line.substr(inner, end - inner)) + "</" +
                std::string(tag) + ">";
      next = plainStart = end + mark.size();
      break;
    }
    i = next;
  }
  return markup + escaped(line.substr(plainStart));
}

/// Whether the line is no continuation of the one before.
bool beginsBlock(std::string_view line) {
  return line.starts_with('#') || line.starts_with("> ") || line.starts_with("- ") ||
         line.starts_with("* ") || line.starts_with("+ ");
}

std::string lineMarkup(std::string_view line) {
  const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
  if (level >= 1 && level <= 6 && level < line.size() && line[level] == ' ') {
    static constexpr std::array<std::string_view, 6> kSizes = {"200%", "160%", "130%",
                                                               "115%", "105%", "100%"};
    return "<span weight=\"bold\" size=\"" + std::string(kSizes[level - 1]) + "\">" +
           inlineMarkup(line.substr(level + 1)) + "</span>";
  }
  if (line.starts_with("> ")) return "<i>" + inlineMarkup(line.substr(2)) + "</i>";
  for (const std::string_view point : {"- ", "* ", "+ "}) {
    if (line.starts_with(point)) return "  • " + inlineMarkup(line.substr(2));
  }
  return inlineMarkup(line);
}

}  // namespace

std::string readableText(std::string_view bytes) { return withoutControls(decodePlainText(bytes)); }

std::string textOfHtml(std::string_view html) {
  const std::string lower = lowerCase(html);
  FlowingText text;
  for (std::size_t i = 0; i < html.size();) {
    if (html[i] == '<' && i + 1 < html.size() &&
        (g_ascii_isalpha(html[i + 1]) || html[i + 1] == '/' || html[i + 1] == '!')) {
      i = endOfTag(html, lower, i, text);
      continue;
    }
    if (html[i] == '&') {
      constexpr std::size_t kLongestEntity = 10;
      const std::size_t length = html.substr(i + 1, kLongestEntity).find(';');
      const std::string character =
          length == html.npos ? "" : characterOf(html.substr(i + 1, length));
      if (!character.empty()) {
        for (const char byte : character) text.add(byte);
        i += length + 2;
        continue;
      }
    }
    text.add(html[i++]);
  }
  return text.take();
}

std::string markupOfMarkdown(std::string_view markdown) {
  std::string markup;
  std::string paragraph;
  const auto endParagraph = [&] {
    if (!paragraph.empty()) markup += lineMarkup(paragraph) + "\n";
    paragraph.clear();
  };
  bool isFenced = false;
  while (!markdown.empty()) {
    const std::string_view line = markdown.substr(0, markdown.find('\n'));
    markdown.remove_prefix(std::min(line.size() + 1, markdown.size()));
    if (line.starts_with("```")) {
      endParagraph();
      isFenced = !isFenced;
    } else if (isFenced || line.starts_with("    ") || line.starts_with('|')) {
      endParagraph();
      markup += "<tt>" + escaped(line) + "</tt>\n";
    } else if (line.empty()) {
      endParagraph();
      markup += '\n';
    } else {
      if (beginsBlock(line)) endParagraph();
      paragraph += (paragraph.empty() ? "" : " ") + std::string(line);
      if (line.starts_with('#')) endParagraph();
    }
  }
  endParagraph();
  return markup;
}

}  // namespace vt::worker
