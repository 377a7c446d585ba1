#pragma once

#include "platform/files/Url.h"

#include <optional>

namespace vl {

// The URL of the real item behind a URL that stands for something else. Both answer nothing when
// the URL is to be used unchanged.

// The target of a document reference (itself resolved as a promise); nothing when the URL is not
// a reference or its target can't be found.
std::optional<Url> vlr_URLByResolvingBookmark(const Url& url);

// The logical URL of a promise's placeholder, carrying the placeholder as its physical URL;
// nothing when the URL is not a promise.
std::optional<Url> vlr_URLByResolvingPromise(const Url& url);

}  // namespace vl
