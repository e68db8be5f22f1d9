#include "Store/ObjectId.h"

#include <algorithm>

namespace ostra {

std::optional<ObjectId> ObjectId::fromHex(QStringView hex)
{
    const bool isHex = hex.size() == 40 && std::ranges::all_of(hex, [](QChar c) {
                           return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
                       });
    if (!isHex) {
        return std::nullopt;
    }
    const QByteArray raw = QByteArray::fromHex(hex.toLatin1());
    ObjectId id;
    std::copy(raw.begin(), raw.end(), id.bytes.begin());
    return id;
}

QString ObjectId::hex() const
{
    const auto raw = QByteArray::fromRawData(reinterpret_cast<const char *>(bytes.data()),
                                             static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(raw.toHex());
}

} // namespace ostra
