#include "client/sync/pass/DeletionLimit.h"

namespace ovsync {
namespace pass {

namespace {

/// With fewer files than that, half of them is an everyday matter.
const int FewFiles = 10;

}  // namespace

std::optional<DeletionLimit> DeletionLimit::Read(const QString& text) {
    DeletionLimit limit;
    const bool isPercent = text.endsWith(QLatin1Char('%'));
    const QString digits = isPercent ? text.left(text.size() - 1) : text;
    bool isNumber = false;
    limit._unit = isPercent ? Unit::Percent : Unit::Files;
    limit._number = digits.toInt(&isNumber);
    if (!isNumber || digits.startsWith(QLatin1Char('+')) || limit._number < 0 || (isPercent && limit._number > 100)) {
        return std::nullopt;
    }
    return limit;
}

bool DeletionLimit::Allows(int deletions, int files, bool isAnyLeft) const {
    switch (_unit) {
        case Unit::Files:
            return deletions <= _number;
        case Unit::Percent:
            return qint64(deletions) * 100 <= qint64(files) * _number;
        case Unit::None:
            break;
    }
    return deletions == 0 || (isAnyLeft && (files < FewFiles || deletions * qint64(2) <= files));
}

QString TransfersFirst() {
    return QStringLiteral(
        "First mend what else is named, because nothing is deleted before everything else is transferred");
}

}  // namespace pass
}  // namespace ovsync
