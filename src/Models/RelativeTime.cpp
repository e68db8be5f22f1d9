#include "Models/RelativeTime.h"

#include <chrono>

namespace ostra {

namespace {
double secondsSinceEpoch()
{
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}
} // namespace

std::optional<QString> relativeTimeString(std::optional<qint64> fromUnix, std::optional<double> now)
{
    if (!fromUnix) {
        return std::nullopt;
    }
    const double elapsed = now.value_or(secondsSinceEpoch()) - static_cast<double>(*fromUnix);
    if (elapsed < 60) {
        return QStringLiteral("just now");
    }
    const auto age = [elapsed](int unit, QChar suffix) {
        return QString::number(static_cast<qint64>(elapsed / unit)) + suffix +
               QStringLiteral(" ago");
    };
    if (elapsed < 3600) {
        return age(60, u'm');
    }
    if (elapsed < 86400) {
        return age(3600, u'h');
    }
    return age(86400, u'd');
}

} // namespace ostra
