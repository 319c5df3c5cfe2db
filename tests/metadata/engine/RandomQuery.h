#pragma once

#include <array>
#include <cstdint>
#include <random>
#include <string>

#include "foundation/UTF8.h"

namespace vt {

/// Queries about the files that RandomFiles makes and what is in them.
class RandomQuery {
 public:
  explicit RandomQuery(std::uint32_t seed) : random_(seed) {}

  std::string next() { return tree(pick(4)); }

 private:
  std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }
  template <class List>
  std::string oneOf(const List& list) {
    return list[pick(static_cast<std::uint32_t>(list.size()))];
  }

  std::string tree(std::uint32_t depth) {
    if (depth == 0) return term();
    std::string result = pick(4) == 0 ? "!(" : "(";
    const char* const joint = pick(2) == 0 ? " && " : " || ";
    for (std::uint32_t left = 1 + pick(3); left > 0; --left) {
      result += tree(pick(depth)) + (left > 1 ? joint : "");
    }
    return result + ")";
  }

  std::string term() {
    switch (pick(13)) {
      case 0:
      case 1:
      case 2:
        return oneOf(kNames) + (pick(4) == 0 ? " != " : " == ") + pattern();
      case 3:
        return oneOf(kTexts) + (pick(4) == 0 ? " != " : " == ") + value();
      case 4:
      case 5:
        return oneOf(kDates) + operation() + date();
      case 6:
        return "InRange(" + oneOf(kDates) + ", " + date() + ", " + date() + ")";
      case 7:
        return oneOf(kNumbers) + operation() + number();
      case 8:
        return "InRange(" + oneOf(kNumbers) + ", " + number() + ", " + number() + ")";
      case 9:
      case 10:
        return oneOf(kContents) + (pick(4) == 0 ? " != " : " == ") + words();
      case 11:
        return std::string("kMDItemFSInvisible == ") + (pick(2) == 0 ? "1" : "0");
      default:
        return oneOf(kOthers);
    }
  }

  std::string operation() {
    constexpr auto kOperations =
        std::to_array<const char*>({" == ", " != ", " < ", " <= ", " > ", " >= "});
    return oneOf(kOperations);
  }

  std::string pattern() {
    constexpr auto kPieces = std::to_array<const char*>(
        {"report", "REP",    "Größe", "gross", "a", "b",      "ab",   "e",
         "ort",    "日本",   "ß",     "i",     "ι", "2024",   ".pdf", "x_y",
         "final",  "\u0301", "\\*",   "\\?",   " ", "nowhere"});
    constexpr auto kModifiers =
        std::to_array<const char*>({"", "c", "d", "cd", "cd", "cd", "w", "cdw", "t", "cdt"});
    std::string text = pick(2) == 0 ? "*" : "";
    for (std::uint32_t left = 1 + pick(2); left > 0; --left) {
      text += oneOf(kPieces);
      if (pick(3) == 0) text += pick(3) == 0 ? "?" : "*";
    }
    return '"' + text + '"' + oneOf(kModifiers);
  }

  std::string words() {
    constexpr auto kPieces = std::to_array<const char*>(
        {"budget", "report", "myreport", "Größe", "日本", "日", "本語", "2024", "plan", "plan9",
         "x", "b", "の", "-", "report 2024", "2024 budget", "nowhere", "naive", "20"});
    constexpr auto kModifiers = std::to_array<const char*>({"", "cd", "cdw", "cdt", "t"});
    if (pick(20) == 0) return "\"*\"";
    std::string text = oneOf(kPieces);
    if (pick(4) == 0) text += " " + oneOf(kPieces);
    if (pick(3) == 0) text += '*';
    if (pick(3) > 0) return '"' + text + '"' + oneOf(kModifiers);
    for (std::uint32_t left = pick(3); left > 0; --left) {
      // Before a character, not in it.
      std::uint32_t at = pick(static_cast<std::uint32_t>(text.size()));
      while (at > 0 && !beginsCodePoint(text[at])) --at;
      text.insert(at, pick(3) == 0 ? "?" : "*");
    }
    return '"' + text + '"' + oneOf(kModifiers);
  }

  std::string value() {
    constexpr auto kValues = std::to_array<const char*>(
        {"\"public.*\"", "\"com.adobe.pdf\"", "\"public.image\"", "\"PUBLIC.FOLDER\"",
         "\"*document\"cd", "\"Folder\"c", "\"*\"", "\"*report*\"cd", "\"public.data\""});
    return oneOf(kValues);
  }

  std::string date() {
    constexpr auto kTimes = std::to_array<const char*>(
        {"$time.now", "$time.now(-40000)", "$time.today", "$time.today(-1)", "$time.yesterday",
         "$time.this_week", "$time.this_month(-7)", "$time.this_year", "$time.last_year",
         "$time.iso(2024-02-29T12:30:00Z)", "$time.iso(2024-02-28)", "730902600", "0"});
    return oneOf(kTimes);
  }

  std::string number() {
    constexpr auto kValues = std::to_array<const char*>(
        {"0", "1", "1500", "4096", "2999.5", "-1", "1e3", "20002", "30001", "20000", "3", "13"});
    return oneOf(kValues);
  }

  static constexpr auto kNames =
      std::to_array<const char*>({"kMDItemFSName", "kMDItemDisplayName"});
  static constexpr auto kTexts = std::to_array<const char*>(
      {"kMDItemContentType", "kMDItemContentTypeTree", "kMDItemKind", "kMDItemPath", "*"});
  static constexpr auto kContents =
      std::to_array<const char*>({"kMDItemTextContent", "kMDItemTextContent", "**"});
  static constexpr auto kDates = std::to_array<const char*>(
      {"kMDItemFSContentChangeDate", "kMDItemContentModificationDate", "kMDItemFSCreationDate",
       "kMDItemAttributeChangeDate", "kMDItemLastUsedDate"});
  static constexpr auto kNumbers = std::to_array<const char*>(
      {"kMDItemFSSize", "kMDItemLogicalSize", "kMDItemPhysicalSize", "kMDItemFSOwnerUserID",
       "kMDItemFSOwnerGroupID", "_kMDItemGroupId", "kMDItemFSNodeCount"});
  static constexpr auto kOthers = std::to_array<const char*>(
      {"true", "false", "kMDItemAuthors == \"*\"", "kMDItemFSCreationDate == \"*\"",
       "kMDItemFSNodeCount == \"*\"", "kMDItemNoSuchThing != 1", "_kMDItemGroupId == \"*\"",
       "kMDItemFSName == \"*\""});

  std::mt19937 random_;
};

}  // namespace vt
