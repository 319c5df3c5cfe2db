#include "extraction/documents/HtmlText.h"

#include <gumbo.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "extraction/FoundAttributes.h"
#include "extraction/IsoDate.h"

namespace vt {
namespace {

// Where browsers look for it.
constexpr std::size_t kCharsetWithin = 1024;

/// Memory that is given back all at once: taking a tree down node by node would descend as deep as
/// whoever wrote the page nested it.
class Arena {
 public:
  void* allocate(std::size_t size) {
    constexpr std::size_t kAlignment = 16;
    constexpr std::size_t kBlock = std::size_t{64} << 10;
    size = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (size > left_) {
      left_ = std::max(size, kBlock);
      blocks_.push_back(std::make_unique_for_overwrite<char[]>(left_));
      next_ = blocks_.back().get();
    }
    left_ -= size;
    return std::exchange(next_, next_ + size);
  }

 private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char* next_ = nullptr;
  std::size_t left_ = 0;
};

/// A parsed page.
class Page {
 public:
  explicit Page(std::string_view text) : options_(kGumboDefaultOptions) {
    options_.max_errors = 0;  // nobody reads them
    options_.allocator = [](void* arena, std::size_t size) {
      return static_cast<Arena*>(arena)->allocate(size);
    };
    options_.deallocator = [](void* /*arena*/, void* /*memory*/) {};
    options_.userdata = &arena_;
    output_ = ::gumbo_parse_with_options(&options_, text.data(), text.size());
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  const GumboNode* root() const { return output_ ? output_->root : nullptr; }

 private:
  Arena arena_;
  GumboOptions options_;
  GumboOutput* output_ = nullptr;
};

std::span<void* const> elementsOf(const GumboVector& vector) {
  return {vector.data, vector.length};
}

bool isText(const GumboNode& node) {
  return node.type == GUMBO_NODE_TEXT || node.type == GUMBO_NODE_WHITESPACE ||
         node.type == GUMBO_NODE_CDATA;
}

std::string_view attributeOf(const GumboNode& node, const char* name) {
  const GumboAttribute* attribute = ::gumbo_get_attribute(&node.v.element.attributes, name);
  return attribute ? std::string_view(attribute->value) : std::string_view();
}

bool isHidden(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_SCRIPT:
    case GUMBO_TAG_STYLE:
    case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_NOFRAMES:
      return true;
    default:
      return false;
  }
}

/// Whether words go on from within the element to behind it.
bool isInline(GumboTag tag) {
  static constexpr std::array kTags = {
      GUMBO_TAG_A,   GUMBO_TAG_ABBR,   GUMBO_TAG_ACRONYM, GUMBO_TAG_B,    GUMBO_TAG_BDI,
      GUMBO_TAG_BDO, GUMBO_TAG_BIG,    GUMBO_TAG_CITE,    GUMBO_TAG_CODE, GUMBO_TAG_DEL,
      GUMBO_TAG_DFN, GUMBO_TAG_EM,     GUMBO_TAG_FONT,    GUMBO_TAG_I,    GUMBO_TAG_INS,
      GUMBO_TAG_KBD, GUMBO_TAG_MARK,   GUMBO_TAG_NOBR,    GUMBO_TAG_Q,    GUMBO_TAG_RUBY,
      GUMBO_TAG_S,   GUMBO_TAG_SAMP,   GUMBO_TAG_SMALL,   GUMBO_TAG_SPAN, GUMBO_TAG_STRIKE,
      GUMBO_TAG_SUB, GUMBO_TAG_STRONG, GUMBO_TAG_SUP,     GUMBO_TAG_TIME, GUMBO_TAG_TT,
      GUMBO_TAG_U,   GUMBO_TAG_VAR,    GUMBO_TAG_WBR,
  };
  return std::ranges::find(kTags, tag) != kTags.end();
}

/// Visits a tree without descending by calls, since pages may be nested as deep as they are long.
class Walk {
 public:
  Walk(BoundedText& text, Extraction* extraction) : text_(text) {
    if (extraction) attributes_.emplace(*extraction);
  }

  void visit(const GumboNode& root) {
    push(root);
    while (!open_.empty() && !text_.isFull()) {
      Step& step = open_.back();
      if (step.next == step.children.size()) {
        if (!isInline(step.tag)) text_.newLine();
        open_.pop_back();
        continue;
      }
      const auto& child = *static_cast<const GumboNode*>(step.children[step.next++]);
      if (isText(child)) {
        text_.append(child.v.text.text);
      } else {
        push(child);
      }
    }
  }

 private:
  struct Step {
    std::span<void* const> children;
    std::size_t next = 0;
    GumboTag tag = GUMBO_TAG_UNKNOWN;
  };

  void push(const GumboNode& node) {
    if (node.type == GUMBO_NODE_DOCUMENT) {
      open_.push_back({elementsOf(node.v.document.children)});
      return;
    }
    if (node.type != GUMBO_NODE_ELEMENT || isHidden(node.v.element.tag)) return;
    const GumboTag tag = node.v.element.tag;
    if (!isInline(tag)) text_.newLine();
    text_.append(attributeOf(node, "alt"));
    if (attributes_) readElement(node);
    open_.push_back({elementsOf(node.v.element.children), 0, tag});
  }

  void readElement(const GumboNode& node) {
    switch (node.v.element.tag) {
      case GUMBO_TAG_TITLE:
        for (const void* each : elementsOf(node.v.element.children)) {
          const auto& child = *static_cast<const GumboNode*>(each);
          if (isText(child)) attributes_->setText("kMDItemTitle", child.v.text.text);
        }
        break;
      case GUMBO_TAG_HTML:
        attributes_->addText("kMDItemLanguages", attributeOf(node, "lang"));
        break;
      case GUMBO_TAG_META:
        readMeta(attributeOf(node, "name"), attributeOf(node, "content"));
        break;
      default:
        break;
    }
  }

  void readMeta(std::string_view name, std::string_view content) {
    std::string key(name);
    std::ranges::transform(key, key.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    for (const std::string_view prefix : {"dcterms.", "dc."}) {
      if (key.starts_with(prefix)) key.erase(0, prefix.size());
    }
    if (key == "author" || key == "creator") {
      attributes_->addText("kMDItemAuthors", content);
    } else if (key == "keywords") {
      attributes_->addTexts("kMDItemKeywords", content, ",;");
    } else if (key == "description") {
      attributes_->setText("kMDItemDescription", content);
    } else if (key == "generator") {
      attributes_->setText("kMDItemCreator", content);
    } else if (key == "copyright") {
      attributes_->setText("kMDItemCopyright", content);
    } else if (key == "rights") {
      attributes_->setText("kMDItemRights", content);
    } else if (key == "subject") {
      attributes_->setText("kMDItemSubject", content);
    } else if (key == "publisher") {
      attributes_->addText("kMDItemPublishers", content);
    } else if (key == "contributor") {
      attributes_->addText("kMDItemContributors", content);
    } else if (key == "identifier") {
      attributes_->setText("kMDItemIdentifier", content);
    } else if (key == "date" || key == "created") {
      attributes_->setDate("kMDItemContentCreationDate", dateInIsoText(content));
    }
  }

  BoundedText& text_;
  std::optional<FoundAttributes> attributes_;
  std::vector<Step> open_;
};

}  // namespace

void readHtml(std::string_view page, Extraction& extraction) {
  BoundedText text;
  const Page parsed(page);
  if (parsed.root()) Walk(text, &extraction).visit(*parsed.root());
  extraction.text = text.take();
}

void appendHtmlText(std::string_view page, BoundedText& text) {
  const Page parsed(page);
  if (parsed.root()) Walk(text, /*extraction=*/nullptr).visit(*parsed.root());
}

std::string textOfHtml(std::string_view page) {
  BoundedText text;
  appendHtmlText(page, text);
  return text.take();
}

std::string_view charsetNamedIn(std::string_view page) {
  constexpr std::string_view kKey = "charset=";
  const std::string_view head = page.substr(0, kCharsetWithin);
  const auto found = std::ranges::search(
      head, kKey, [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
  std::string_view rest = head.substr(static_cast<std::size_t>(found.begin() - head.begin()));
  if (rest.empty()) return {};
  rest.remove_prefix(kKey.size());
  if (rest.starts_with('"') || rest.starts_with('\'')) rest.remove_prefix(1);
  return rest.substr(0, rest.find_first_of("\"'>; /\r\n\t"));
}

}  // namespace vt
