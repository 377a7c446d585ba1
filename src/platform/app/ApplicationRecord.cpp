#include "platform/app/ApplicationRecord.h"

namespace vl {

QString ApplicationRecord::logDescription() const {
    return bundleIdentifier + QStringLiteral(" (") + localizedName + QLatin1Char(')');
}

}  // namespace vl
