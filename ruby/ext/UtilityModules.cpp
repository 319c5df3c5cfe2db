// The operations that extend texts, bytes and paths: modules whose operations take one of these
// first.

#include "Classes.h"
#include "Message.h"
#include "util/Base64.h"
#include "util/CocoaCryptoHashing.h"
#include "util/HexDump.h"
#include "util/NSFileManagerAdditions.h"

namespace vt::ruby {
namespace {

template <class R>
using OfBytes = R (*)(const Data&);
template <class R>
using OfText = std::optional<R> (*)(const std::string&);

/// A binary String is bytes, any other text.
template <class R, OfBytes<R> Bytes, OfText<R> Text>
std::optional<R> digest(const Value& value) {
  if (const Data* bytes = value.get<Data>()) return Bytes(*bytes);
  if (const std::string* text = value.get<std::string>()) return Text(*text);
  throw InvalidArgumentError("expected a String");
}

void defineModule(VALUE module, const char* name, std::span<const Message> messages) {
  defineMessages(rb_define_module_under(module, name), messages);
}

}  // namespace

void defineCocoaCryptoHashing(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<digest<Data, md5Hash, md5Hash>>("md5Hash"),
      moduleMessage<digest<std::string, md5HexHash, md5HexHash>>("md5HexHash"),
      moduleMessage<digest<Data, sha1Hash, sha1Hash>>("sha1Hash"),
      moduleMessage<digest<std::string, sha1HexHash, sha1HexHash>>("sha1HexHash"),
  };
  defineModule(module, "CocoaCryptoHashing", kMessages);
}

void defineBase64(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<dataWithBase64EncodedString>("dataWithBase64EncodedString:"),
      moduleMessage<base64Encoding>("base64Encoding"),
  };
  defineModule(module, "Base64", kMessages);
}

void defineHexDump(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<encodeBase64>("encodeBase64"),
      moduleMessage<encodeBase64WithNewlines>("encodeBase64WithNewlines:"),
      moduleMessage<decodeBase64>("decodeBase64"),
      moduleMessage<decodeBase64WithNewLines>("decodeBase64WithNewLines:"),
      moduleMessage<hexval>("hexval"),
      moduleMessage<hexdump>("hexdump"),
  };
  defineModule(module, "HexDump", kMessages);
}

void defineNSFileManagerAdditions(VALUE module) {
  static constexpr Message kMessages[] = {
      moduleMessage<mimeTypeAtPath>("mimeTypeAtPath:"),
  };
  defineModule(module, "NSFileManagerAdditions", kMessages);
}

}  // namespace vt::ruby
