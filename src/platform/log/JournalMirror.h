#pragma once

#include <QString>

#include <utility>
#include <vector>

namespace vl {

// The journald copy of system log records. Records map to journal fields: "Message" to MESSAGE,
// "Level" 0..7 to PRIORITY, "Source" / "Line" / "Function" to CODE_FILE / CODE_LINE / CODE_FUNC,
// and every key, those included, also to "VL_" and the key upper-cased. Thread-safe.
class JournalMirror {
public:
    using Fields = std::vector<std::pair<QString, QString>>;

    // True when built with libsystemd and journald's socket exists (checked once per process:
    // sd_journal_send reports success even when nothing listens).
    static bool isAvailable();
    static void send(const QString& identifier, const Fields& fields);

    // The journal field name of a record key: "VL_" and the key upper-cased, with every
    // character outside A-Z and 0-9 replaced by "_", at most 64 characters.
    static QByteArray fieldName(const QString& key);
};

}  // namespace vl
