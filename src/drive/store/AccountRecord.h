#pragma once

#include "platform/files/Error.h"

#include <QString>

#include <optional>

namespace vl {

// <home>/account.json: {"account":"<name>","identity":"<hex token>","freeBytes":<n>}.
// A missing file means signed out; a missing "freeBytes" makes the quota operation fail.
class AccountRecord {
public:
    QString account;
    QString identity;  // hex
    std::optional<quint64> freeBytes;

    // Absent without error when the file doesn't exist; absent with an error (code 259) when it
    // is malformed or has no identity.
    static std::optional<AccountRecord> read(const QString& path, Error* error);
    std::optional<Error> write(const QString& path) const;
    // A fresh random identity of 32 hex digits.
    static QString makeIdentity();
};

}  // namespace vl
