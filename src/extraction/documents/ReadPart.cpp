#include "extraction/documents/ReadPart.h"

#include "extraction/LookTime.h"

namespace vt {

bool readPart(ZipPackage& package, XmlHandler& handler) {
  XmlParser parser(handler);
  bool isGood = true;
  const bool isWhole = package.read([&](std::string_view piece) {
    isGood = !isTimeShort() && parser.read(piece);
    return isGood;
  });
  return isWhole && isGood && parser.finish();
}

}  // namespace vt
