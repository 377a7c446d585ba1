#pragma once

#include <QString>

// The app's string tables: Qt Linguist, ID-based, the system's keys as IDs. The English table is
// installed first and the locale's table after it, so a key missing from the locale's table
// falls back to English, and a key missing from both shows the key itself.

namespace vl::Strings {

// Installs the English table, then the system locale's, into the running application. Safe to
// call more than once; later calls do nothing.
void install();

// The text for a plain key; the key itself when no table has it.
QString localized(const char* key);
QString localized(const QString& key);

// The text of a plural key (".DICT.…") for the count: the table's numerus form chosen by the
// count, still unformatted (the caller formats it with the count and any other arguments).
QString localizedPlural(const QString& key, double count);

}  // namespace vl::Strings
