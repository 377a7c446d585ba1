#pragma once

#include "platform/files/Url.h"

namespace vl {

// Asked by the quick-preview controller of every item it shows: audio and video always play in
// the platform's standard media player.
bool wantsDefaultMediaPlayer(const Url& url);

}  // namespace vl
