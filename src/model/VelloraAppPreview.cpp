#include "model/VelloraAppPreview.h"

namespace vl {

bool wantsDefaultMediaPlayer(const Url& /*url*/) {
    return true;
}

}  // namespace vl
