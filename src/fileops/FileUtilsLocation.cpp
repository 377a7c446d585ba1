// The content-type and location rules of FileUtils.

#include "fileops/FileUtils.h"

#include "logging/VLLogging.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/files/ContentTypeRegistry.h"

namespace vl {

namespace {

std::optional<QStringList> relativeComponents(const CloudDocuments& documents, const Url& url) {
    const std::optional<QString> relative = documents.relativePathForURL(url);
    if (!relative) {
        return std::nullopt;
    }
    return relative->split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

}  // namespace

std::optional<Error> FileUtils::containerAndRelativePathforURLContainerRelativePathComponents(
    const Url& url, std::optional<CloudContainer>* container, QStringList* relativePathComponents) {
    const CloudDocuments& documents = CloudDocuments::shared();
    Error error;
    const std::optional<CloudContainer> found = documents.containerForItemAtURL(url, &error);
    const bool failed = !error.domain().isEmpty();
    if (!found || failed) {
        return failed ? std::optional<Error>(error) : std::nullopt;
    }
    if (container) {
        *container = found;
    }
    if (relativePathComponents && found->documentsURL()) {
        const std::optional<QStringList> item = relativeComponents(documents, url);
        const std::optional<QStringList> folder =
            relativeComponents(documents, *found->documentsURL());
        if (item && folder && item->size() > folder->size()) {
            *relativePathComponents = item->mid(folder->size());
        }
    }
    return std::nullopt;
}

std::optional<QString> FileUtils::displayableLocationForURL(const Url& url) {
    std::optional<CloudContainer> container;
    QStringList components;
    if (containerAndRelativePathforURLContainerRelativePathComponents(url, &container,
                                                                      &components) ||
        !container) {
        return std::nullopt;
    }
    const CloudDocuments& documents = CloudDocuments::shared();
    QString text;
    if (container->identifier() != documents.defaultContainerIdentifier()) {
        text = documents.defaultContainerLocalizedName() + LocationSeparator;
    }
    text += container->localizedName();
    for (qsizetype i = 0; i + 1 < components.size(); ++i) {
        text += LocationSeparator + components.at(i);
    }
    VLLOG(7, "PathBar: %@", text);
    return text;
}

bool FileUtils::isAudioVideoImageFile(const Url& url) {
    const QString extension = url.pathExtension();
    if (extension.isEmpty()) {
        return false;
    }
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.preferredIdentifierForExtension(extension);
    if (type.isEmpty()) {
        return false;
    }
    for (const QString& kind :
         {ContentTypeRegistry::Image, ContentTypeRegistry::Movie, ContentTypeRegistry::Audio}) {
        if (registry.conformsTo(type, kind)) {
            VLLOG(7, "isAudioVideoImageFile: Extension %@ is %@ which conforms to UTI %@",
                  extension, type, kind);
            return true;
        }
    }
    VLLOG(7, "isAudioVideoImageFile: Extension %@ is %@ which is not.", extension, type);
    return false;
}

bool FileUtils::isValidExtensionForContainer(const Url& url) {
    const QString extension = url.pathExtension();
    if (extension.isEmpty()) {
        return true;
    }
    const ContentTypeRegistry& registry = ContentTypeRegistry::shared();
    const QString type = registry.preferredIdentifierForExtension(extension);
    if (type.isEmpty()) {
        return true;
    }
    const CloudDocuments& documents = CloudDocuments::shared();
    const std::optional<CloudContainer> container = documents.containerForItemAtURL(url, nullptr);
    if (!container) {
        return false;
    }
    if (container->identifier() == documents.defaultContainerIdentifier()) {
        return true;
    }
    if (!container->documentsURL()) {
        return false;
    }
    if (container->documentTypes().isEmpty()) {
        return true;
    }
    // The record is typed: the content types are strings, already without duplicates, so the
    // malformed declarations another platform has to reject cannot reach this point.
    for (const QString& entry : container->allContentTypes()) {
        if (entry == ContentTypeRegistry::Data || entry == ContentTypeRegistry::Content) {
            VLLOG(6, "Container supports all UTIs");
            return true;
        }
        if (registry.conformsTo(type, entry)) {
            VLLOG(6, "Extension %@ conforms to UTI %@", extension, entry);
            return true;
        }
    }
    return false;
}

}  // namespace vl
