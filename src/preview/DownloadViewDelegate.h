#pragma once

#include "platform/files/Url.h"

namespace vl {

class DownloadView;

// Told by a DownloadView when the person asks to start or cancel the download of its item. Both
// have defaults that do nothing. Main thread only.
class DownloadViewDelegate {
public:
    virtual ~DownloadViewDelegate() = default;

    virtual void downloadViewDidPressStartDownload(DownloadView& view, const Url& url) {
        (void)view;
        (void)url;
    }
    virtual void downloadViewDidPressCancelDownload(DownloadView& view, const Url& url) {
        (void)view;
        (void)url;
    }
};

}  // namespace vl
