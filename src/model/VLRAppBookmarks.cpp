#include "model/VLRAppBookmarks.h"

#include "platform/cloud/CloudDocuments.h"

namespace vl {

std::optional<Url> vlr_URLByResolvingBookmark(const Url& url) {
    CloudDocuments& documents = CloudDocuments::shared();
    if (url.isEmpty() || !documents.isExternalDocumentReference(url)) {
        return std::nullopt;
    }
    const std::optional<Url> target = documents.externalDocumentReferenceTarget(url, nullptr);
    if (!target) {
        return std::nullopt;
    }
    if (std::optional<Url> promised = vlr_URLByResolvingPromise(*target)) {
        return promised;
    }
    return target;
}

std::optional<Url> vlr_URLByResolvingPromise(const Url& url) {
    CloudDocuments& documents = CloudDocuments::shared();
    if (url.isEmpty() || !documents.hasItemPromiseAtURL(url)) {
        return std::nullopt;
    }
    std::optional<Url> logical = documents.promisedItemLogicalURL(url, nullptr);
    if (!logical) {
        return std::nullopt;
    }
    logical->setPromisedPhysicalURL(url);
    return logical;
}

}  // namespace vl
