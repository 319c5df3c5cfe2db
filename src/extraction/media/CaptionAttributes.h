#pragma once

namespace Exiv2 {
class Image;
}

namespace vt {

class FoundAttributes;

/// Tells what people have written into a picture: title, keywords, who made it, when and where. Of
/// what stands there several times XMP counts before IPTC, and that before EXIF; keywords are
/// those of all.
void tellCaptions(const Exiv2::Image& image, FoundAttributes& found);

}  // namespace vt
