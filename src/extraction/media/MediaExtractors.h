#pragma once

#include <memory>
#include <vector>

#include "extraction/media/MailExtractor.h"
#include "metadata/extract/Extractor.h"

namespace vt {

// They read files of anyone's making with large libraries: for the worker's child alone. To be made
// before its walls stand, since locales and time zones are read. All borrow `types`.

/// The one for mail.
std::vector<std::unique_ptr<Extractor>> mailExtractors(const ContentTypes& types,
                                                       HtmlText htmlText = {});

/// The one for pictures.
std::vector<std::unique_ptr<Extractor>> pictureExtractors(const ContentTypes& types);

/// Those for sound and archives, as far as their libraries were there when this program was built.
std::vector<std::unique_ptr<Extractor>> mediaExtractors(const ContentTypes& types);

/// The one for video, whose libraries are larger than all others.
std::vector<std::unique_ptr<Extractor>> videoExtractors(const ContentTypes& types);

}  // namespace vt
