#pragma once

#include "platform/dispatch/Dispatch.h"
#include "platform/files/Url.h"

#include <QHash>
#include <QIcon>
#include <QImage>
#include <QSet>

#include <functional>
#include <memory>

namespace vl {

// Thumbnails for a folder list's rows: each is read from the drive's thumbnail cache and scaled
// on a background queue, then made an icon on the main thread, once per item, and only when a
// row asks for it (the rows on screen), so scrolling never waits for one. Main thread only,
// except what runs on the queue.
class DocumentThumbnailLoader {
public:
    // `ready` is told, on the main thread, of each item whose thumbnail has become available.
    explicit DocumentThumbnailLoader(std::function<void(const Url&)> ready);
    ~DocumentThumbnailLoader();

    // Whether items of this content type get a thumbnail: images, PDFs and videos.
    static bool wantsThumbnail(const QString& contentType);
    // The thumbnail when it is ready; otherwise a null icon, and the read is started once. A
    // cloud-only item's thumbnail is dimmed and carries the cloud mark, as its icon would.
    QIcon thumbnail(const Url& url, int size, bool cloudOnly = false);

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
    std::function<void(const Url&)> ready_;
    // By URL and whether the item was cloud-only: a download changes the picture.
    QHash<std::pair<Url, bool>, QIcon> icons_;
    QSet<std::pair<Url, bool>> requested_;
};

}  // namespace vl
