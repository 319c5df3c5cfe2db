// What two other implementations say of well-formed property lists: Python's plistlib and libplist.
#include <gtest/gtest.h>
#include <plist/plist.h>
#include <stdio.h>
#include <sys/wait.h>

#include <fstream>
#include <iterator>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/PropertyList.h"
#include "foundation/XMLPropertyListWriter.h"
#include "support/Places.h"
#include "support/PropertyListTesting.h"
#include "support/RandomPropertyList.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kTrees = 150;

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// What Python prints; nothing when it fails.
std::optional<std::string> python(const std::string& arguments) {
  const std::string command =
      "python3 '" + testDataFolder() + "/foundation/property_list_peer.py' " + arguments;
  FILE* pipe = popen(command.c_str(), "r");  // NOLINT(cert-env33-c): no foreign text in it
  if (!pipe) return std::nullopt;
  std::string printed;
  char buffer[4096];
  while (const std::size_t size = fread(buffer, 1, sizeof buffer, pipe)) {
    printed.append(buffer, size);
  }
  const int status = pclose(pipe);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(printed) : std::nullopt;
}

TEST(PropertyListPeers, PythonWritesXMLAndBinaryThatReadTheSame) {
  const TemporaryFolder folder;
  ASSERT_TRUE(python("make '" + folder.path().string() + "' 7 " + std::to_string(kTrees)));
  for (int i = 0; i < kTrees; ++i) {
    SCOPED_TRACE(testing::Message() << "seed 7, tree " << i);
    const std::string name = folder / std::to_string(i);
    const std::string expected = contents(name + ".dump");
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(outcome(readPropertyList(contents(name + ".xml"))), expected);
    EXPECT_EQ(outcome(readPropertyList(contents(name + ".bplist"))), expected);
  }
}

TEST(PropertyListPeers, PythonReadsWhatWasWritten) {
  const TemporaryFolder folder;
  std::string arguments = "dump";
  std::string expected;
  for (int seed = 0; seed < kTrees; ++seed) {
    const Value tree = RandomPropertyList(static_cast<std::uint64_t>(seed)).tree();
    const std::string path = folder / std::to_string(seed);
    std::ofstream(path, std::ios::binary) << *writeXMLPropertyList(tree);
    arguments += " '" + path + "'";
    expected += dump(tree) + "\n";
  }
  EXPECT_EQ(python(arguments), expected);
}

// The tree as libplist holds it, in the tests' own notation. It knows one integer type, keeps the
// sign only for some and cuts dates to the years 1932 to 2069: the trees below stay inside that.
std::string dumpPeer(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      std::uint8_t boolean = 0;
      plist_get_bool_val(node, &boolean);
      return dump(boolean != 0);
    }
    case PLIST_UINT: {
      std::uint64_t integer = 0;
      plist_get_uint_val(node, &integer);
      return dump(static_cast<std::int64_t>(integer));
    }
    case PLIST_REAL: {
      double real = 0;
      plist_get_real_val(node, &real);
      return dump(real);
    }
    case PLIST_DATE: {
      std::int32_t seconds = 0;
      std::int32_t micros = 0;
      plist_get_date_val(node, &seconds, &micros);
      return dump(kReferenceDate + std::chrono::seconds{seconds});
    }
    case PLIST_STRING: {
      std::uint64_t length = 0;
      const char* text = plist_get_string_ptr(node, &length);
      return dump(std::string(text, length));
    }
    case PLIST_DATA: {
      std::uint64_t length = 0;
      const char* bytes = plist_get_data_ptr(node, &length);
      return dump(Data(std::string_view(bytes, length)));
    }
    case PLIST_ARRAY: {
      std::string dumped = "[";
      for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        dumped += (i > 0 ? "," : "") + dumpPeer(plist_array_get_item(node, i));
      }
      return dumped + "]";
    }
    case PLIST_DICT: {
      std::string dumped = "{";
      plist_dict_iter iterator = nullptr;
      plist_dict_new_iter(node, &iterator);
      while (true) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        if (!value) break;
        dumped += (dumped.size() > 1 ? "," : "") + dump(std::string(key)).substr(1) + ":" +
                  dumpPeer(value);
        free(key);
      }
      free(iterator);
      return dumped + "}";
    }
    default:
      return "?";
  }
}

Value treeForPeer() {
  const auto records = Array::make();
  for (int i = 0; i < 50; ++i) {
    records->append(Dictionary::make(
        {{"title", "caf\xC3\xA9 & <" + std::to_string(i) + ">"},
         {"count", (i - 25) * 1'000'003},
         {"weight", i / 7.0},
         {"when", Date{std::chrono::seconds{1'000'000'000 + i * 86'399}}},
         {"bytes", Data(std::string(static_cast<std::size_t>(i) * 5, static_cast<char>(i)))},
         {"on", i % 2 == 0},
         {"none", Array::make()}}));
  }
  return Dictionary::make({{"version", 1}, {"records", records}, {"empty", Dictionary::make()}});
}

TEST(PropertyListPeers, LibplistReadsWhatWasWrittenAndItsBinaryReadsTheSame) {
  const Value tree = treeForPeer();
  const std::string xml = *writeXMLPropertyList(tree);
  plist_t node = nullptr;
  plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(dumpPeer(node), dump(tree));
  char* binary = nullptr;
  std::uint32_t size = 0;
  plist_to_bin(node, &binary, &size);
  plist_free(node);
  ASSERT_NE(binary, nullptr);
  EXPECT_EQ(outcome(readPropertyList({binary, size})), dump(tree));
  plist_to_bin_free(binary);
}

}  // namespace
}  // namespace vt
