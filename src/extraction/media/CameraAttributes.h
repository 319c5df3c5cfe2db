#pragma once

namespace Exiv2 {
class ExifData;
}

namespace vt {

class MediaAttributes;

/// Tells what a camera has written into a picture about itself, the exposure and the place.
void tellCamera(const Exiv2::ExifData& exif, MediaAttributes& found);

}  // namespace vt
