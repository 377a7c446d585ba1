#pragma once

#include "drive/store/DriveStore.h"
#include "platform/files/Error.h"
#include "platform/files/Url.h"

#include <QString>

#include <cstdio>

#include <memory>
#include <optional>

namespace vl {

class Arguments;

// What every command works with: the drive store of the home ($VELLORA_HOME or the default),
// standard output and the one-line errors on standard error.
class ToolContext {
public:
    static constexpr int Failure = 1;
    static constexpr int UsageFailure = 2;

    explicit ToolContext(const QString& homePath);

    // Where the one-line errors go. The process's own standard error carries the service's log
    // lines, which main() silences so that a failure reads as one line.
    static void setErrorStream(FILE* stream);

    DriveStore& store() { return *store_; }
    const DriveHome& home() const { return store_->home(); }

    // Makes the home's folders and default container; the error line is already printed.
    bool prepare();

    void print(const QString& line) const;
    // "velloractl: <message>" on standard error; answers Failure.
    int fail(const QString& message) const;
    int fail(const QString& what, const Error& error) const;
    // "velloractl: <message> (see velloractl --help)"; answers UsageFailure.
    int usageError(const QString& message) const;
    // Checks that nothing is left over; prints the usage error for the first surplus item.
    bool expectNothingMore(const Arguments& arguments, qsizetype positionalCount,
                           int* status) const;

    // A one-line English description of an error, with the path it concerns.
    static QString describe(const Error& error);

    // A drive path ("Documents/Report.pdf", "/Documents/Report.pdf" or an absolute path inside
    // the drive) as a path relative to drive/; absent, with the reason, for anything outside.
    std::optional<QString> driveRelativePath(const QString& argument, QString* problem) const;
    // True when the drive has the item, local or cloud-only.
    bool itemExists(const QString& relativePath) const;
    bool isFolder(const QString& relativePath) const;
    Url itemURL(const QString& relativePath) const;
    // Makes a folder (and its parents) in the drive and in the cloud copy.
    std::optional<Error> makeFolder(const QString& relativePath) const;

private:
    std::unique_ptr<DriveStore> store_;
};

}  // namespace vl
