#pragma once

namespace Exiv2 {
class ExifData;
}

namespace vt {

class FoundAttributes;

/// Tells what a camera has written into a picture about itself, the exposure and the place.
void tellCamera(const Exiv2::ExifData& exif, FoundAttributes& found);

}  // namespace vt
