#pragma once

#include "platform/files/Url.h"

#include <QString>

namespace vl {

// What the app knows of another application that can open documents: one installed desktop
// entry, read once when the record is made. docs/ARCHITECTURE.md says where each field comes from.
struct ApplicationRecord {
    QString itemName;
    QString localizedName;
    QString localizedShortName;
    QString shortVersionString;
    QString vendorName;
    QString bundleIdentifier;
    QString bundleExecutable;
    Url bundleContainerURL;
    bool installed = false;
    qulonglong itemID = 0;
    QString description;
    // Whether it opens the document where it lies (it takes local paths or URIs on its command
    // line) rather than being started with no document at all.
    bool supportsOpenInPlace = false;
    bool requiresTerminal = false;
    QString iconName;

    // "<bundle identifier> (<localized name>)", as log lines show the record.
    QString logDescription() const;
};

}  // namespace vl
