#pragma once

#include <memory>
#include <vector>

#include "extraction/media/MailExtractor.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// Those for mail, pictures, sound and archives, as far as their libraries were there when
/// this program was built. They read files of anyone's making with large libraries: for the
/// worker's child alone. To be made before its walls stand, since locales and time zones are read.
std::vector<std::unique_ptr<Extractor>> mediaExtractors(const ContentTypes& types,
                                                        HtmlText htmlText = {});

/// The same for video, whose libraries are larger than all others.
std::vector<std::unique_ptr<Extractor>> videoExtractors(const ContentTypes& types);

}  // namespace vt
