#include "platform/cloud/CloudContainer.h"

namespace vl {

QStringList CloudContainer::allContentTypes() const {
    QStringList types;
    for (const DocumentType& type : documentTypes_) {
        for (const QString& contentType : type.contentTypes) {
            if (!types.contains(contentType)) {
                types.append(contentType);
            }
        }
    }
    return types;
}

QString CloudContainer::description() const {
    return QStringLiteral("<CloudContainer identifier \"%1\" name \"%2\" documents %3>")
        .arg(identifier_, localizedName_,
             documentsURL_ ? documentsURL_->description() : QStringLiteral("(null)"));
}

}  // namespace vl
