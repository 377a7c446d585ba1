#pragma once

#include <QString>

#include <optional>

namespace vl {

// The on-disk layout of one drive home:
//
//   <home>/account.json        the signed-in account (absent = signed out)
//   <home>/service.json        service settings (network override, throttling)
//   <home>/kvstore.json        the key-value store
//   <home>/metadata.json       tags and sharing of local items when xattrs are refused
//   <home>/containers/<id>.json  container records
//   <home>/cloud/              the cloud copy: same relative paths as drive/, full content
//   <home>/drive/              the local root of synced documents
//       <dir>/.<name>.vlcloud     placeholder of the cloud-only item <dir>/<name>
//       <name>.vlref              a document reference
//   <home>/staging/<process>/  the service's work in progress (downloads, uploads, records
//                              being written, items being removed); see StagingArea
//
// A placeholder is the only file of the service inside drive/, and its name form is reserved:
// no item is made, moved or downloaded to such a name.
//
// Pure path arithmetic: nothing here touches the disk except ensureLayout().
class DriveHome {
public:
    // $VELLORA_HOME when set, else $XDG_DATA_HOME/vellora (default ~/.local/share/vellora).
    static QString defaultPath();

    DriveHome() = default;
    explicit DriveHome(const QString& rootPath);

    const QString& rootPath() const { return root_; }
    QString accountFile() const;
    QString serviceFile() const;
    QString keyValueStoreFile() const;
    QString metadataFile() const;
    QString containersDir() const;
    QString containerRecordFile(const QString& identifier) const;
    const QString& cloudDir() const { return cloud_; }
    const QString& driveDir() const { return drive_; }
    QString stagingDir() const;

    // Creates the folders of the layout; false when one can't be made.
    bool ensureLayout() const;

    // Paths relative to drive/ ("" is the drive root). Absent outside the drive.
    std::optional<QString> driveRelativePath(const QString& absolutePath) const;
    QString drivePathFor(const QString& driveRelativePath) const;
    QString cloudPathFor(const QString& driveRelativePath) const;

    // The placeholder name of the item <dir>/<name>.
    static QString placeholderFileName(const QString& name);
    // Longest name, in UTF-8 bytes, of an item that can be cloud-only: its placeholder's name
    // must fit in a file name.
    static constexpr int MaxCloudOnlyNameBytes = 255 - 9;
    static bool canBeCloudOnly(const QString& name);
    // The logical name of a placeholder file name, absent for any other name.
    static std::optional<QString> logicalNameOfPlaceholder(const QString& fileName);
    static bool isPlaceholderFileName(QStringView fileName);
    // A name the service keeps for itself (a placeholder's): refused for a new item.
    static bool isReservedName(const QString& fileName);
    static QString placeholderPathFor(const QString& logicalPath);
    // Where a download in progress was kept before the staging area; nothing is made there now.
    static QString downloadPathFor(const QString& logicalPath);

    static inline const QString PlaceholderSuffix = QStringLiteral(".vlcloud");
    static inline const QString ReferenceExtension = QStringLiteral("vlref");

private:
    QString root_;
    QString cloud_;  // looked up for every item, so made once
    QString drive_;
};

}  // namespace vl
